// Flat functions for dynamic libraries and for the path of the running program.
//
// They throw nothing. Unless said otherwise they are thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vek/base/windows.h"

namespace vek::os {

// Loads the library `fileName`. The caller owns the result and releases it with freeLibrary.
// Returns null for a null or empty name and on failure. Calls LoadLibraryA.
HMODULE loadLibrary(const char* fileName);

// The same, and unless `text` is null, stores a text of the outcome in `*text`: "success",
// "filename missing" for a null or empty name, otherwise the system's text for its error (with its
// line end), or the error's number if there is no text of less than 128 bytes. GetLastError is that
// error then.
//
// Not thread-safe with a `text`: the text of an error points to a static buffer that the next
// failure overwrites. Calls LoadLibraryA and FormatMessageA.
HMODULE loadLibraryReport(const char* fileName, const char** text);

// Returns the function `name` of `module`; null if there is none, if an argument is null, or if the
// name is empty. Calls GetProcAddress.
FARPROC libraryFunction(HMODULE module, const char* name);

// Releases a library. Returns 1 for success and for a null `module`, otherwise 0. Calls
// FreeLibrary.
int freeLibrary(HMODULE module);

// Stores the directory of the running program's file in `buffer` of `size` bytes, without a
// backslash at its end. Returns 1 for success and 0 for failure. Unless `error` is null, `*error`
// is 0 or the reason: ERROR_INVALID_PARAMETER (87) for a null buffer, ERROR_BUFFER_OVERFLOW (111)
// if the program's whole path and its terminator don't fit, ERROR_INVALID_NAME (123) if the path
// has no backslash, or the system's error. After a failure `buffer` holds an empty text. Calls
// GetModuleFileNameA.
int programPath(char* buffer, std::size_t size, std::uint32_t* error);

// The same, and stores the name of the program's file in `name` of `nameSize` bytes, truncated if
// necessary and always terminated. `name` may be null, and is not changed on failure.
int programPathAndName(char* buffer, std::size_t size, std::uint32_t* error, char* name,
                       std::size_t nameSize);

}  // namespace vek::os
