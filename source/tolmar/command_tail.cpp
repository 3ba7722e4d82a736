#include "source/tolmar/command_tail.h"

#include <algorithm>
#include <cstring>

namespace tolmar {

namespace {

constexpr char restartOption[] = "-restartgui";
constexpr std::size_t restartOptionLength = sizeof restartOption - 1;

constexpr unsigned char blank = ' ';  // every byte up to it ends an unquoted name

// One separating byte follows the option; its value is ignored.
std::size_t argumentOffset(Mode mode) {
    return mode == Mode::restartGui ? restartOptionLength + 1 : 0;
}

}  // namespace

const char* commandTail(const char* commandLine) {
    // A multi-byte character needs no care: its second byte is neither a quote nor a blank in any
    // of the system's code pages.
    bool quoted = false;
    const char* at = commandLine;
    for (; *at != '\0' && (quoted || static_cast<unsigned char>(*at) > blank); ++at) {
        quoted = quoted != (*at == '"');
    }
    while (*at == ' ' || *at == '\t') {
        ++at;
    }
    return at;
}

Mode selectMode(const char* tail) {
    if (tail[0] == '\0' || std::strlen(tail) >= refusedTailLength) {
        return Mode::nothing;
    }
    return std::strncmp(tail, restartOption, restartOptionLength) == 0 ? Mode::restartGui
                                                                       : Mode::replace;
}

bool copyDirectory(const char* tail, Mode mode, PathBuffer& directory) {
    const std::size_t length = std::strlen(tail);
    // The argument of the option alone would start one byte behind the terminator: it is empty.
    const std::size_t offset = std::min(argumentOffset(mode), length);
    // The length is that of the whole tail in both modes, deliberately: so a single quote behind
    // the option passes as the opening and the closing one.
    const bool quoted = length > 1 && tail[offset] == '"' && tail[length - 1] == '"';
    std::strcpy(directory.data(), tail + offset + (quoted ? 1 : 0));
    if (quoted) {
        const std::size_t closingQuote =
            std::strlen(directory.data()) - 1;  // wraps for an empty text
        if (closingQuote >= directory.size()) {
            return false;
        }
        directory[closingQuote] = '\0';
    }
    return true;
}

}  // namespace tolmar
