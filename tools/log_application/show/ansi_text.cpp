#include "tools/log_application/show/ansi_text.h"

#include <algorithm>

#include "tools/log_application/show/utf8.h"
#include "vek/base/windows.h"

namespace log_application {

namespace {

constexpr const char* replacement = "\xEF\xBF\xBD";

// Appends the character of the ANSI code page that begins at `at`. Returns its bytes; 0 if it isn't
// one.
std::size_t appendAnsi(std::string& out, std::string_view text, std::size_t at) {
    const bool isLead = IsDBCSLeadByte(static_cast<BYTE>(text[at])) != 0;
    const std::size_t size = isLead && at + 1 < text.size() ? 2 : 1;
    wchar_t wide[2] = {};
    char utf8[8] = {};
    const int wideSize = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, &text[at],
                                             static_cast<int>(size), wide, 2);
    const int utf8Size =
        WideCharToMultiByte(CP_UTF8, 0, wide, wideSize, utf8, sizeof utf8, nullptr, nullptr);
    if (wideSize == 0 || utf8Size == 0) {
        return 0;
    }
    out.append(utf8, static_cast<std::size_t>(utf8Size));
    return size;
}

}  // namespace

std::string utf8Of(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Character character = decodeUtf8(text, at);
        std::size_t size = character.size;
        if (character.valid) {
            out += text.substr(at, size);
        } else if (const std::size_t ansi = appendAnsi(out, text, at)) {
            size = ansi;
        } else {
            out += replacement;
        }
        at += size;
    }
    return out;
}

}  // namespace log_application
