#include "vek/base/format.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "vek/base/compiler.h"

namespace vek {

namespace {

// A text that fits into this costs one pass and no allocation beyond that of the result.
constexpr std::size_t firstSize = 1024;
// The next room, for formats with arguments out of order: the runtime's function for these doesn't
// report the length of a text that doesn't fit. A longer text is counted first.
constexpr std::size_t secondSize = 32768;

// Formats into `buffer` of `room` bytes. The result is the length of the whole text, which has been
// stored and terminated only if it is less than `room`; negative for an error, and perhaps for a
// text that doesn't fit. With a `room` of 0 it is the length, or negative for an error.
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
    // So that an end that is found was written.
    std::fill_n(buffer, room, '\x1');
    std::va_list copy;
    va_copy(copy, arguments);
    const int length =
        room == 0 ? _vscprintf_p(pattern, copy) : _vsprintf_p(buffer, room, pattern, copy);
    va_end(copy);
    // For a padded character that doesn't fit, the runtime may give the length before it, with no
    // end there.
    const bool isCut =
        length >= 0 && static_cast<std::size_t>(length) < room && buffer[length] != '\0';
    return isCut ? -1 : length;
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
    const auto fits = [](int length, std::size_t size) {
        return length >= 0 && static_cast<std::size_t>(length) <= size;
    };
    char first[firstSize + 1];
    int length = print(first, sizeof first, arguments);
    if (fits(length, firstSize)) {
        return std::string(first, static_cast<std::size_t>(length));
    }
    if (length < 0) {
        const auto second = std::make_unique_for_overwrite<char[]>(secondSize + 1);
        length = print(second.get(), secondSize + 1, arguments);
        if (fits(length, secondSize)) {
            return std::string(second.get(), static_cast<std::size_t>(length));
        }
        length = print(nullptr, 0, arguments);
        if (length < 0) {
            return {};
        }
    }
    std::string result(static_cast<std::size_t>(length), '\0');
    if (!fits(print(result.data(), result.size() + 1, arguments), result.size())) {
        return {};
    }
    return result;
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
