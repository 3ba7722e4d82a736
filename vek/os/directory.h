// Flat functions that make and remove directories.
//
// They throw nothing. The result is 1 for success and 0 for failure, with GetLastError left as the
// system left it. A null path gives 0. All are safe from any thread, and meet what other threads
// and processes do to the same directories as the system's calls do.
#pragma once

#include <cstddef>

namespace vek::os {

// Makes a new directory of this process's own in the system's place for temporary files, and puts
// its path into `buffer` of `size` bytes. MAX_PATH (260) bytes are enough for what the system
// allows. The names end in "vek-" and six characters, of which a process gets 26 at most that exist
// at a time. After a failure, and too small a buffer is one, `buffer` holds an empty text. Stands
// on GetTempPathA, _mktemp and _mkdir.
int tempDirectory(char* buffer, std::size_t size);

// Makes the directory `path`, and those above it that are missing; separators are `\` and `/`.
// Nothing is made of a path below 2 bytes, and the result is 1. A path of 260 bytes or more fails,
// and nothing is made of it either. What exists is not looked at any closer: if `path` is a file,
// the result is 1. After a failure the directories that were made stay. Stands on _access and
// _mkdir.
int createDirectories(const char* path);

// The same, without a walk over the path if `path` exists.
int createDirectoriesIfMissing(const char* path);

// Removes an empty directory. Stands on RemoveDirectoryA.
int removeDirectory(const char* path);

// Removes the directory `path` with all that is in it, depth first; the result tells whether `path`
// could be removed at last. What can't be removed stays, and the directories above it with it:
//  - directories whose name begins with a dot, which are left alone with their content;
//  - entries whose path takes more than 255 bytes;
//  - what the system refuses to remove: read-only files, files in use.
// The rest is gone then. An empty `path` is no directory, and fails. Links to directories are
// followed. Stands on _findfirst, _unlink and _rmdir.
int removeTree(const char* path);

}  // namespace vek::os
