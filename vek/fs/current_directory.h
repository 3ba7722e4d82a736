// The current directory of this process, and paths made absolute against it.
//
// There is one for the whole process, and any thread may change it at any time. Not synchronised.
#pragma once

#include <string>

namespace vek::fs {

// Returns the current directory, of any length. Calls GetCurrentDirectoryA. Throws OsError.
std::string currentDirectory();

// Makes `path` the current directory. Calls SetCurrentDirectoryA. Throws FsError.
void changeDirectory(const std::string& path);

// Returns `path` made absolute against the current directory by expandFrom of vek/fs/path_text.h:
// only a leading "." or ".." is replaced.
//
// Throws RuntimeError if the current directory can't be read, but never for an absolute path.
std::string expand(const std::string& path);

}  // namespace vek::fs
