#include "source/tolmar/command_tail.h"

#include <algorithm>
#include <cstring>

namespace tolmar {

namespace {

constexpr char restartOption[] = "-restartgui";
constexpr std::size_t restartOptionLength = sizeof restartOption - 1;

// Behind the option stands one separating byte, which is not looked at.
std::size_t argumentOffset(Mode mode) {
    return mode == Mode::restartGui ? restartOptionLength + 1 : 0;
}

}  // namespace

Mode selectMode(const char* tail) {
    if (tail[0] == '\0' || std::strlen(tail) >= refusedTailLength) {
        return Mode::nothing;
    }
    return std::strncmp(tail, restartOption, restartOptionLength) == 0 ? Mode::restartGui
                                                                       : Mode::replace;
}

bool copyDirectory(const char* tail, Mode mode, PathBuffer& directory) {
    const std::size_t length = std::strlen(tail);
    // The option alone has its argument one byte behind the terminator: it is taken as empty.
    const std::size_t offset = std::min(argumentOffset(mode), length);
    // The length is that of the whole tail in both modes, deliberately. So a quote alone behind the
    // option passes this test as both the opening and the closing one.
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
