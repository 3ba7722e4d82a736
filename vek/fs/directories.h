// Directories created and removed together with what is above and in them.
#pragma once

#include <string>

namespace vek::fs {

// Creates `path` and the missing directories on the way to it; components are separated by
// backslashes (vek/fs/path_text.h). A directory that another thread or process creates meanwhile is
// as good as one created here. Calls CreateDirectoryA.
//
// Throws FileExistsError if `path` exists already, as a directory or otherwise, and what
// createDirectory throws; directories created by then stay.
void createDirectories(const std::string& path);

// The same, but accepts an existing directory. Returns true if this call created `path`, false if
// it existed or another thread or process created it meanwhile. Otherwise throws as
// createDirectories.
bool ensureDirectories(const std::string& path);

// Whether the directory `path` has no entries. Throws what Dir throws.
bool isEmptyDirectory(const std::string& path);

// Removes the directory `path` and everything in it. Calls DeleteFileA and RemoveDirectoryA for the
// entries that a Dir finds.
//
// Links and junctions are never followed, `path` itself included: the link is removed, its target
// stays. What an entry is, is decided by the attributes that the search returns, and a directory
// that is a reparse point of any kind counts as a link. Nobody may replace directories in the tree
// by links while this runs.
//
// The first failure ends it; what has been removed by then is gone. Throws FsError with the path of
// the entry:
//  - 5 (ERROR_ACCESS_DENIED) for a read-only file;
//  - 3 (ERROR_PATH_NOT_FOUND) if `path` is missing or empty, which would otherwise mean the root of
//    the current drive;
//  - 123 (ERROR_INVALID_NAME) for a name that would lead elsewhere: one that holds a separator, "?"
//    or another character that no name can have, or ends in a dot or blank. The system returns such
//    names for characters that the ANSI code page doesn't have.
void removeTree(const std::string& path);

}  // namespace vek::fs
