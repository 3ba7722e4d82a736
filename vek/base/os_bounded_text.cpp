#include "vek/base/os_bounded_text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace vek::os {

int boundedPrint(char* buffer, std::size_t size, const char* format, ...) {
    if (size == 0) {
        return 0;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
    if (length < 0) {
        buffer[0] = '\0';
        return 0;
    }
    return std::min(length, static_cast<int>(size - 1));
}

char* boundedCopy(char* buffer, std::size_t size, const char* source) {
    if (buffer == nullptr || source == nullptr || size == 0) {
        return nullptr;
    }
    const std::size_t length = std::min(std::strlen(source), size - 1);
    std::memcpy(buffer, source, length);
    buffer[length] = '\0';
    return buffer;
}

}  // namespace vek::os
