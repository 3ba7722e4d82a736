// Directories made and removed with what is above and in them.
#pragma once

#include <string>

namespace vek::fs {

// Makes `path` and the directories on the way to it that are missing; they are found by its
// backslashes. A directory that another process makes meanwhile is as good as one made here.
//
// Throws FileExistsError if `path` exists, also if it is a directory, and what createDirectory
// throws; what has been made by then stays.
void createDirectories(const std::string& path);

// The same, but content with a directory that exists: the result is false then, and true if it was
// made. Otherwise throws as createDirectories does.
bool ensureDirectories(const std::string& path);

// Whether nothing is in the directory `path`. Throws what Dir throws.
bool isEmptyDirectory(const std::string& path);

// Removes the directory `path` with all that is in it.
//
// The first failure ends it, with what has been removed by then gone: FsError, also for a read-only
// file in it (5, ERROR_ACCESS_DENIED), for a directory that is missing (3, ERROR_PATH_NOT_FOUND),
// and for an empty path (3), which would otherwise mean the root of the current drive; and what
// `stat` and Dir throw.
void removeTree(const std::string& path);

}  // namespace vek::fs
