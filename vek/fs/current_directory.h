// The current directory of this process, and paths made absolute by it.
//
// It is one value for the whole process, which any thread may change at any time; nothing here
// guards it.
#pragma once

#include <string>

namespace vek::fs {

// The current directory, of any length. Stands on GetCurrentDirectoryA. Throws OsError.
std::string currentDirectory();

// Makes `path` the current directory. Stands on SetCurrentDirectoryA. Throws FsError.
void changeDirectory(const std::string& path);

// `path` made absolute against the current directory, as expandFrom of vek/fs/path_text.h does it:
// a "." or ".." is treated at the front only.
//
// Throws RuntimeError if there is no current directory to be had, but not for an absolute path.
std::string expand(const std::string& path);

}  // namespace vek::fs
