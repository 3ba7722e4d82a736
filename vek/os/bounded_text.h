// Formatting, copying and appending into fixed buffers, never past their end. The functions throw
// nothing and are thread-safe on separate buffers.
#pragma once

#include <cstddef>

#include "vek/base/compiler.h"

namespace vek::os {

// Formats like vsnprintf into `buffer` of `size` bytes, and always terminates it. Returns the
// length of the stored text, also if it was truncated; 0 for a size of 0, a null argument, and
// arguments that can't be formatted.
VEK_PRINTF(3, 4) int boundedPrint(char* buffer, std::size_t size, const char* format, ...);

// Copies `source` into `buffer` of `size` bytes, truncated if necessary and always terminated.
// Returns `buffer`, or null if a pointer is null or the size is 0.
char* boundedCopy(char* buffer, std::size_t size, const char* source);

// Appends `source` to the text in `buffer` of `size` bytes, truncated if necessary and always
// terminated. A buffer without a terminator counts as full: its last byte becomes the terminator.
// Returns `buffer`, or null if a pointer is null or the size is 0.
char* boundedAppend(char* buffer, std::size_t size, const char* source);

}  // namespace vek::os
