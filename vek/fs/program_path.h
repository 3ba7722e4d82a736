// The path, directory and name of this process's executable.
//
// All call GetModuleFileNameA and throw OsError: with the system's number, or with 111
// (ERROR_BUFFER_OVERFLOW) for a path of 260 bytes or more. Thread-safe.
//
// A program started by a path that begins with "\\?\" gets an ordinary one here, without the prefix
// (withoutLongPathPrefix of vek/fs/path_text.h): slashes and further components may be added to it.
#pragma once

#include <string>

namespace vek {

// The whole path of the executable.
std::string programPath();

// The directory of the executable, without a separator at its end.
std::string programDirectory();

// The name of the executable up to its first dot: "tolmarhlp" for "tolmarhlp.exe".
std::string programName();

}  // namespace vek
