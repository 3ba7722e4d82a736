#include "tools/log_application/show/escape.h"

#include <cstdint>

#include "tools/log_application/show/utf8.h"
#include "vek/base/format.h"

namespace log_application {

namespace {

// Characters that are invisible or move the text around them.
bool isControl(std::uint32_t codePoint) {
    const auto isIn = [codePoint](std::uint32_t first, std::uint32_t last) {
        return codePoint >= first && codePoint <= last;
    };
    return codePoint < 0x20 || isIn(0x7F, 0x9F) || isIn(0x200E, 0x200F) || isIn(0x2028, 0x202E) ||
           isIn(0x2066, 0x2069) || codePoint == 0x061C || codePoint == 0xFEFF;
}

// Returns null for a character without a short form.
const char* shortEscape(std::uint32_t codePoint) {
    switch (codePoint) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return nullptr;
    }
}

void appendControl(std::string& out, const Character& character) {
    if (const char* const known = shortEscape(character.codePoint)) {
        out += known;
    } else if (character.size == 1) {
        out += vek::format("\\x%02X", character.codePoint);
    } else {
        out += vek::format("\\u%04X", character.codePoint);
    }
}

}  // namespace

std::string escapeControls(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Character character = decodeUtf8(text, at);
        if (isControl(character.codePoint)) {
            appendControl(out, character);
        } else {
            out += text.substr(at, character.size);
        }
        at += character.size;
    }
    return out;
}

void appendJsonString(std::string& out, std::string_view text) {
    out += '"';
    for (std::size_t at = 0; at < text.size();) {
        const Character character = decodeUtf8(text, at);
        if (!character.valid) {
            out += "\\ufffd";
        } else if (character.codePoint == '"' || character.codePoint == '\\') {
            out += '\\';
            out += text[at];
        } else if (const char* const known = shortEscape(character.codePoint)) {
            out += known;
        } else if (isControl(character.codePoint)) {
            out += vek::format("\\u%04x", character.codePoint);
        } else {
            out += text.substr(at, character.size);
        }
        at += character.size;
    }
    out += '"';
}

}  // namespace log_application
