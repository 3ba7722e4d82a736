// Flat functions that create and remove directories.
//
// They throw nothing. They return 1 for success and 0 for failure, with GetLastError left as the
// system left it. A null path gives 0. All are thread-safe, and as safe against other threads and
// processes that use the same directories as the system's calls are.
#pragma once

#include <cstddef>

namespace vek::os {

// Creates a directory with a new name in the system's directory for temporary files and stores its
// path in `buffer` of `size` bytes; MAX_PATH (260) bytes are enough. The name is "vek-" and six
// characters, with 26 possible names in a process at a time. A name that another thread takes
// meanwhile, or that is being deleted (error 5), is given up for another; an error 5 that stays
// ends it after some milliseconds. After a failure, which includes too small a buffer, `buffer`
// holds an empty text. Calls GetTempPathA, _mktemp and _mkdir.
int tempDirectory(char* buffer, std::size_t size);

// Creates the directory `path` and the missing ones above it; separators are `\` and `/`, where a
// `\` that is the second byte of a two-byte character is none. A directory that another thread or
// process creates meanwhile is as good as one created here. A path below 2 bytes creates nothing
// and gives 1; one of 260 bytes or more creates nothing and gives 0. Only whether something exists
// is looked at: if `path` is a file, the result is 1. After a failure the directories created by
// then stay. Calls _access and _mkdir.
int createDirectories(const char* path);

// The same, without a walk over the path if `path` exists.
int createDirectoriesIfMissing(const char* path);

// Removes an empty directory, or a link to a directory. Calls RemoveDirectoryA.
int removeDirectory(const char* path);

// Removes the directory `path` and everything in it, depth first; returns whether `path` itself was
// removed at last.
//
// Links and junctions are never followed, `path` itself included: the link is removed, its target
// stays. A directory that is a reparse point of any kind counts as a link. Nobody may replace
// directories in the tree by links meanwhile.
//
// What can't be removed stays, and with it the directories above it; the rest is removed:
//  - directories whose name begins with a dot, which are left alone with their content;
//  - entries whose path takes more than 255 bytes;
//  - entries whose name would lead elsewhere (leadsToItself of vek/os/entry_name.h);
//  - what the system refuses to remove: read-only files, files in use.
// An empty `path` fails. Calls GetFileAttributesA, for `path` alone, _findfirst, _findnext, _unlink
// and _rmdir.
int removeTree(const char* path);

}  // namespace vek::os
