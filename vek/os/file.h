// Flat functions for single files, and for the directory entries that match a pattern.
//
// They throw nothing. Unless said otherwise they return 1 for success and 0 for failure, with
// GetLastError left as the system left it. A null path gives 0. All are thread-safe.
//
// Those that call functions of the C runtime fail for a directory whose path ends in a separator.
// Times are seconds since 1970 in 64 bits; only those of findFirst and findNext have 32 bits, and
// end in 2038.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "vek/base/windows.h"

namespace vek::os {

// Deletes a file. Calls DeleteFileA.
int deleteFile(const char* path);

// Copies a file with its times and attributes, over an existing one unless `failIfExists` is not 0.
// Calls CopyFileA.
int copyFile(const char* from, const char* to, int failIfExists);

// Renames a file or directory; moves a file to another volume too. An existing `to` is an error.
// Calls MoveFileA.
int moveFile(const char* from, const char* to);

// Returns 1 if there is a file or directory `path`. Calls _access.
int pathExists(const char* path);

// Returns the directory bit of the mode, 0x4000, if `path` is a directory; 0 if it is something
// else or can't be read. Calls _stat64.
int isDirectory(const char* path);

// Sets the times of the last access and the last modification of a file to `seconds` since 1970.
// Fails for a directory. Calls _utime64.
int setFileTime(const char* path, __time64_t seconds);

// Stores the low 32 bits of the size of a file in bytes in `size`, which may be null; 0 on failure.
// Calls _stat64.
int fileSize(const char* path, std::uint32_t* size);

// Stores the times of the last access and the last modification in seconds since 1970. Both outputs
// may be null, and are left alone on failure. Calls _stat64.
int fileTimes(const char* path, __time64_t* access, __time64_t* modification);

// The kinds of entries that findFirst and findNext return.
inline constexpr int findKindOther = 1;
inline constexpr int findKindDirectory = 2;
inline constexpr std::size_t findNameSize = 260;

// Begins a search for `pattern`, a path whose last component may hold wildcards, and returns the
// first entry that matches; "." and ".." are entries too. The caller owns `find` and passes it to
// findClose; it is INVALID_HANDLE_VALUE after a failure. A null `find` gives 0 without a system
// call.
//
// `name` has room for findNameSize bytes. `kind` is one of the above; `time` the last write in
// seconds since 1970, or -1 if it doesn't fit; `size` the low 32 bits of the size in bytes. Each of
// these may be null. Calls FindFirstFileA.
int findFirst(HANDLE* find, const char* pattern, char* name, int* kind, std::int32_t* time,
              std::uint32_t* size);

// Returns the next entry. 0 with the error ERROR_NO_MORE_FILES (18) at the end; nothing is stored
// then. Calls FindNextFileA.
int findNext(HANDLE find, char* name, int* kind, std::int32_t* time, std::uint32_t* size);

// Ends a search. Calls FindClose.
int findClose(HANDLE find);

// Returns the position of the open `file`, in bytes from its start; -1 on failure, as for a pipe,
// which may leave GetLastError alone.
// Calls NtQueryInformationFile, or SetFilePointerEx where there is none: that takes twice the time,
// because it also sets the position.
std::int64_t filePosition(HANDLE file);

}  // namespace vek::os
