#include "vek/base/format.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "vek/base/compiler.h"

namespace vek {

namespace {

// A text that fits into this costs one pass and no allocation beyond that of the result. A longer
// one costs two, or three if its arguments are numbered out of order: the runtime's function for
// these doesn't report the length of a text that doesn't fit.
constexpr std::size_t firstSize = 1024;
// With room for this much an error is taken for final.
constexpr std::size_t sizeLimit = 32768;

// Formats into `buffer` of `room` bytes. The result is the length of the whole text, which has been
// stored and terminated only if it is less than `room`; negative for an error.
using Print = int (*)(char* buffer, std::size_t room, const char* pattern, std::va_list arguments);

int printPlain(char* buffer, std::size_t room, const char* pattern, std::va_list arguments) {
    std::va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(buffer, room, pattern, copy);
    va_end(copy);
    return length;
}

#ifdef _WIN32

int printPositional(char* buffer, std::size_t room, const char* pattern, std::va_list arguments) {
    const QuietRuntimeErrors quiet;
    std::va_list copy;
    va_copy(copy, arguments);
    int length = _vsprintf_p(buffer, room, pattern, copy);
    va_end(copy);
    // Either an error or a text that is too long; only the count shows which. For a padded
    // character that doesn't fit, the runtime may give the length before it, with no end there.
    if (length < 0 || (static_cast<std::size_t>(length) < room && buffer[length] != '\0')) {
        va_copy(copy, arguments);
        length = _vscprintf_p(pattern, copy);
        va_end(copy);
    }
    return length;
}

#else

constexpr Print printPositional = printPlain;

#endif

const char* skipDigits(const char* text) {
    while (*text >= '0' && *text <= '9') {
        ++text;
    }
    return text;
}

// Whether the plain conversion at `pattern`, which points behind the '%', is one that all runtimes
// print alike: the common integers and narrow texts, without the rarer flags, and without a
// precision where they don't agree on it (beside leading zeros, for a character). `pattern` is
// moved behind it.
bool skipCommonConversion(const char*& pattern) {
    if (*pattern == '-') {
        ++pattern;
    }
    const bool zeros = *pattern == '0';
    pattern = skipDigits(pattern);
    const bool precision = *pattern == '.';
    if (precision) {
        pattern = skipDigits(pattern + 1);
    }
    const bool isLong = *pattern == 'l';
    if (isLong) {
        pattern += pattern[1] == 'l' ? 2 : 1;
    }
    switch (*pattern++) {
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            return !(zeros && precision);
        case 's':
            return !isLong && !zeros;
        case 'c':
            return !isLong && !zeros && !precision;
        default:
            return false;
    }
}

// How the arguments of a pattern are named.
enum class Form { plain, numberedInOrder, other };

// `other` also means patterns with conversions other than those above. The search is written
// out, as the functions of the runtime would take longer than the formatting.
Form formOf(const char* pattern) {
    int conversions = 0;
    int numbered = 0;
    while (*pattern != '\0') {
        if (*pattern++ != '%') {
            continue;
        }
        if (*pattern == '%') {
            ++pattern;
            continue;
        }
        ++conversions;
        if (*pattern == '0' + conversions && pattern[1] == '$' && conversions <= 9) {
            ++numbered;
            pattern += 2;
        }
        if (!skipCommonConversion(pattern)) {
            return Form::other;
        }
    }
    if (numbered == 0) {
        return Form::plain;
    }
    return numbered == conversions ? Form::numberedInOrder : Form::other;
}

// Copies a pattern of the form `numberedInOrder` without its numbers of one digit.
void copyWithoutNumbers(const char* pattern, char* plain) {
    while ((*plain++ = *pattern) != '\0') {
        if (*pattern++ != '%') {
            continue;
        }
        if (*pattern == '%') {
            *plain++ = *pattern++;
        } else {
            pattern += 2;
        }
    }
}

// There are two ways of formatting. vsnprintf is several times faster and reports the length
// of a long text at once, so it gets what it can print just alike: plain patterns, and those whose
// numbers say no more than their order does. All others go to the runtime's numbered form.
class Formatter {
  public:
    explicit Formatter(const char* pattern) : usedPattern(pattern) {
        const Form form = formOf(pattern);
        if (form == Form::numberedInOrder && std::strlen(pattern) < plain.size()) {
            copyWithoutNumbers(pattern, plain.data());
            usedPattern = plain.data();
            print = &printPlain;
        } else if (form == Form::plain) {
            print = &printPlain;
        }
    }
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;

    // As Print.
    int operator()(char* buffer, std::size_t room, std::va_list arguments) const {
        return print(buffer, room, usedPattern, arguments);
    }

  private:
    const char* usedPattern;
    Print print = printPositional;
    std::array<char, 256> plain;
};

}  // namespace

std::string formatv(const char* pattern, std::va_list arguments) {
    if (pattern == nullptr) {
        return {};
    }
    const Formatter print(pattern);
    char first[firstSize + 1];
    std::size_t size = firstSize;
    int length = print(first, size + 1, arguments);
    if (length >= 0 && static_cast<std::size_t>(length) <= size) {
        return std::string(first, static_cast<std::size_t>(length));
    }
    std::string result;
    for (;;) {
        if (length >= 0) {
            size = static_cast<std::size_t>(length);
        } else if (size >= sizeLimit) {
            return {};
        } else {
            size *= 2;
        }
        result.resize(size);
        length = print(&result[0], size + 1, arguments);
        if (length >= 0 && static_cast<std::size_t>(length) <= size) {
            result.resize(static_cast<std::size_t>(length));
            return result;
        }
    }
}

std::string format(const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    std::string result;
    try {
        result = formatv(pattern, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return result;
}

}  // namespace vek
