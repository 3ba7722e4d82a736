// Formatting, copying and appending into fixed buffers, never past their end. They throw nothing
// and are safe from any thread on separate buffers.
#pragma once

#include <cstddef>

namespace vek::os {

// Formats like vsnprintf into `buffer` of `size` bytes, which is always terminated. The result is
// the length of what is stored, also when the text was cut; 0 for a size of 0 or a null argument,
// and for what can't be formatted.
int boundedPrint(char* buffer, std::size_t size, const char* format, ...);

// Copies `source` into `buffer` of `size` bytes, cut where needed and always terminated. The result
// is `buffer`, or null if a pointer is null or the size is 0.
char* boundedCopy(char* buffer, std::size_t size, const char* source);

// Appends `source` to the text in `buffer` of `size` bytes, cut where needed and always terminated.
// A buffer without a terminator counts as full: its last byte becomes the terminator. The result is
// `buffer`, or null if a pointer is null or the size is 0.
char* boundedAppend(char* buffer, std::size_t size, const char* source);

}  // namespace vek::os
