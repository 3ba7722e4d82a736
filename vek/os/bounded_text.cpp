#include "vek/os/bounded_text.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace vek::os {

int boundedPrint(char* buffer, std::size_t size, const char* format, ...) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    if (format == nullptr) {
        buffer[0] = '\0';
        return 0;
    }
    // The length has to fit the result.
    const int room = static_cast<int>(std::min(size, std::size_t{INT_MAX}));
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, static_cast<std::size_t>(room), format, arguments);
    va_end(arguments);
    if (length < 0) {
        buffer[0] = '\0';
        return 0;
    }
    return std::min(length, room - 1);
}

char* boundedCopy(char* buffer, std::size_t size, const char* source) {
    if (buffer == nullptr || source == nullptr || size == 0) {
        return nullptr;
    }
    const std::size_t length = std::min(std::strlen(source), size - 1);
    std::memmove(buffer, source, length);
    buffer[length] = '\0';
    return buffer;
}

char* boundedAppend(char* buffer, std::size_t size, const char* source) {
    if (buffer == nullptr || source == nullptr || size == 0) {
        return nullptr;
    }
    const auto* end = static_cast<const char*>(std::memchr(buffer, '\0', size));
    const std::size_t used = end != nullptr ? static_cast<std::size_t>(end - buffer) : size - 1;
    boundedCopy(buffer + used, size - used, source);
    return buffer;
}

}  // namespace vek::os
