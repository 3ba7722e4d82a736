// Flat functions over dynamic libraries and the running program's own file.
//
// They throw nothing. Unless said otherwise they are safe from any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vek/base/windows.h"

namespace vek::os {

// Loads the library `fileName`. The result is the caller's, to be given to freeLibrary; it is null
// for a null or empty name, and if the system refuses. Stands on LoadLibraryA.
HMODULE loadLibrary(const char* fileName);

// The same, and unless `text` is null, a text of the outcome in `*text`: "success", "filename
// missing" for a null or empty name, otherwise the system's text for its error (with its line end),
// or the error's number where there is no text of less than 128 bytes. GetLastError is that error
// then.
//
// The text of an error stands in one buffer of the process until the next failure: one thread at a
// time may use this function with a `text`. Stands on LoadLibraryA and FormatMessageA.
HMODULE loadLibraryReport(const char* fileName, const char** text);

// The function `name` of `module`; null if it has none, if an argument is null, or if the name is
// empty. Stands on GetProcAddress.
FARPROC libraryFunction(HMODULE module, const char* name);

// Gives back a library. The result is 1 for success and for a null `module`, otherwise 0. Stands on
// FreeLibrary.
int freeLibrary(HMODULE module);

// Puts the directory that the running program's file stands in into `buffer` of `size` bytes,
// without a backslash at its end. The result is 1 for success and 0 for failure; unless `error` is
// null, `*error` is 0 or what went wrong: ERROR_INVALID_PARAMETER (87) for a null buffer,
// ERROR_BUFFER_OVERFLOW (111) if the program's whole path and its terminator don't fit,
// ERROR_INVALID_NAME (123) if there is no backslash in it, or the system's error. After a failure
// `buffer` holds an empty text. Stands on GetModuleFileNameA.
int programPath(char* buffer, std::size_t size, std::uint32_t* error);

// The same, and the name of the program's file in `name` of `nameSize` bytes, cut where needed and
// always terminated. `name` may be null, and is left alone after a failure.
int programPathAndName(char* buffer, std::size_t size, std::uint32_t* error, char* name,
                       std::size_t nameSize);

}  // namespace vek::os
