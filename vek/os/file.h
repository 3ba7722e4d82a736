// Flat functions over single files, and over the directory entries of what a pattern matches.
//
// They throw nothing. Unless said otherwise the result is 1 for success and 0 for failure, with
// GetLastError left as the system left it. A null path gives 0. All are safe from any thread.
//
// Those that stand on functions of the C runtime fail for a directory whose path ends in a
// separator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "vek/base/windows.h"

namespace vek::os {

// Deletes a file. Stands on DeleteFileA.
int deleteFile(const char* path);

// Copies a file, over an existing one unless `failIfExists` isn't 0. Stands on CopyFileA.
int copyFile(const char* from, const char* to, int failIfExists);

// Renames a file or directory; an existing `to` is an error. Stands on MoveFileA.
int moveFile(const char* from, const char* to);

// 1 if there is a file or directory `path`. Stands on _access.
int pathExists(const char* path);

// The bit of a file's mode, 0x4000, if `path` is a directory, and 0 if it is something else or
// can't be looked at. Stands on _stat.
int isDirectory(const char* path);

// Sets the times of the last access and the last modification of a file to `seconds` since 1970.
// Fails for a directory. Stands on _utime.
int setFileTime(const char* path, std::time_t seconds);

// The size of a file in bytes, of which the low 32 bits count; 0 if it can't be had. Stands on
// _stat.
int fileSize(const char* path, std::uint32_t* size);

// The times of the last access and the last modification in seconds since 1970. Both outputs may be
// null, and are left alone if the times can't be had. Stands on _stat.
int fileTimes(const char* path, std::time_t* access, std::time_t* modification);

// What findFirst and findNext tell of an entry.
inline constexpr int findKindOther = 1;
inline constexpr int findKindDirectory = 2;
inline constexpr std::size_t findNameSize = 260;

// Opens a search for `pattern`, a path whose last part may hold wildcards, and gives the first
// entry that matches; "." and ".." are entries, too. The search is the caller's, to be ended by
// findClose; after a failure it is INVALID_HANDLE_VALUE. A null `find` gives 0 without a system
// call.
//
// `name` has room for findNameSize bytes. `kind` is one of the above; `time` that of the last write
// in seconds since 1970, or -1 if it doesn't fit; `size` the low 32 bits of the size in bytes. Each
// of these may be null. Stands on FindFirstFileA.
int findFirst(HANDLE* find, const char* pattern, char* name, int* kind, std::int32_t* time,
              std::uint32_t* size);

// Gives the next entry of the search. 0 with the error ERROR_NO_MORE_FILES (18) means that there is
// none; nothing is stored then. Stands on FindNextFileA.
int findNext(HANDLE find, char* name, int* kind, std::int32_t* time, std::uint32_t* size);

// Ends a search. Stands on FindClose.
int findClose(HANDLE find);

}  // namespace vek::os
