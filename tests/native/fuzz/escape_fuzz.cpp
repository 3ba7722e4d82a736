// Text that others wrote, made safe to be shown, and as JSON.
#include <nlohmann/json.hpp>

#include "tests/native/fuzz/fuzz.h"
#include "tools/log_application/show/escape.h"
#include "tools/log_application/show/json_object.h"
#include "tools/log_application/show/utf8.h"

namespace {

using namespace log_application;
using nlohmann::json;
using vek::test::require;

std::string encoded(std::uint32_t point) {
    const auto byte = [](std::uint32_t value) { return static_cast<char>(value); };
    const auto next = [&](int shift) { return byte(0x80 | ((point >> shift) & 0x3F)); };
    if (point < 0x80) {
        return {byte(point)};
    }
    if (point < 0x800) {
        return {byte(0xC0 | point >> 6), next(0)};
    }
    if (point < 0x10000) {
        return {byte(0xE0 | point >> 12), next(6), next(0)};
    }
    return {byte(0xF0 | point >> 18), next(12), next(6), next(0)};
}

// `text` with U+FFFD in the place of each byte that is no UTF-8. `sound` tells whether there was
// none.
std::string repaired(const std::string& text, bool& sound) {
    std::string result;
    sound = true;
    for (std::size_t at = 0; at < text.size();) {
        const Character character = decodeUtf8(text, at);
        require(character.size >= 1 && character.size <= text.size() - at,
                "a character is within the text");
        const std::string bytes = text.substr(at, character.size);
        if (character.valid) {
            require(bytes == encoded(character.codePoint), "a character is its bytes");
            result += bytes;
        } else {
            require(character.size == 1, "a bad byte is one byte");
            result += "\xEF\xBF\xBD";
            sound = false;
        }
        at += character.size;
    }
    return result;
}

bool isSoundToOthers(const std::string& text) {
    try {
        json(text).dump();
        return true;
    } catch (const json::type_error&) {
        return false;
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = vek::test::textOf(data, size);
    bool sound = false;
    const std::string expected = repaired(text, sound);
    require(sound == isSoundToOthers(text), "others take the same for UTF-8");
    std::string written;
    appendJsonString(written, text);
    require(json::parse(written).get<std::string>() == expected, "a string reads as it was");
    JsonObject object;
    object.add(text, std::string_view(text));
    require(json::parse(object.text())[expected] == expected, "so do a key and a value");

    const std::string shown = escapeControls(text);
    for (std::size_t at = 0; at < shown.size();) {
        const Character character = decodeUtf8(shown, at);
        const std::uint32_t point = character.codePoint;
        require(point >= 0x20 && (point < 0x7F || point > 0x9F),
                "what is shown holds no control character");
        require(point < 0x2028 || point > 0x202E, "nor a line separator or a direction");
        at += character.size;
    }
    require(escapeControls(shown) == shown, "what was escaped needs no escape");
    return 0;
}
