#include "vek/base/format.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vek {

namespace {

// A text that fits into this costs one pass and no allocation beyond that of the result.
constexpr std::size_t firstSize = 128;
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

// A runtime of the newer kind ends the process for a format that it refuses, unless the thread has
// a handler. In the older one the start-up code of the compiler has installed one that does
// nothing.
class QuietFormatErrors {
  public:
    QuietFormatErrors() = default;
    QuietFormatErrors(const QuietFormatErrors&) = delete;
    QuietFormatErrors& operator=(const QuietFormatErrors&) = delete;
#ifdef _UCRT
    ~QuietFormatErrors() {
        _set_thread_local_invalid_parameter_handler(previous);
    }

  private:
    static void ignore(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, std::uintptr_t) {}

    _invalid_parameter_handler previous = _set_thread_local_invalid_parameter_handler(&ignore);
#else
    ~QuietFormatErrors() {}
#endif
};

int printPositional(char* buffer, std::size_t room, const char* pattern, std::va_list arguments) {
    const QuietFormatErrors quiet;
    std::va_list copy;
    va_copy(copy, arguments);
    int length = _vsprintf_p(buffer, room, pattern, copy);
    va_end(copy);
    if (length < 0) {
        // Either an error or a text that is too long; only the count can tell.
        va_copy(copy, arguments);
        length = _vscprintf_p(pattern, copy);
        va_end(copy);
    }
    return length;
}

#else

constexpr Print printPositional = printPlain;

#endif

// Whether `pattern` holds nothing but the plain conversions that all runtimes print alike. They are
// left to vsnprintf, which is several times faster and reports the length at once.
bool isCommonPlain(const char* pattern) {
    while ((pattern = std::strchr(pattern, '%')) != nullptr) {
        ++pattern;
        if (*pattern == '%') {
            ++pattern;
            continue;
        }
        const bool zeros = *pattern == '0';
        const bool left = *pattern == '-';
        pattern += zeros || left ? 1 : 0;
        pattern += std::strspn(pattern, "0123456789");
        if (*pattern == '.') {
            ++pattern;
            pattern += std::strspn(pattern, "0123456789");
        }
        const std::size_t longs = std::strspn(pattern, "l");
        pattern += longs;
        const bool integer = *pattern != '\0' && std::strchr("diuxXo", *pattern) != nullptr;
        const bool text = (*pattern == 's' || *pattern == 'c') && longs == 0 && !zeros;
        if (!(integer && longs <= 2) && !text) {
            return false;
        }
        ++pattern;
    }
    return true;
}

}  // namespace

std::string formatv(const char* pattern, std::va_list arguments) {
    if (pattern == nullptr) {
        return {};
    }
    const Print print = isCommonPlain(pattern) ? &printPlain : &printPositional;
    char first[firstSize + 1];
    std::size_t size = firstSize;
    int length = print(first, size + 1, pattern, arguments);
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
        length = print(&result[0], size + 1, pattern, arguments);
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
