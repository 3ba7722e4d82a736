// Programs found along the PATH variable.
#pragma once

#include <string>

namespace vek::fs {

// The variable with the search path, "PATH", and the suffix that is appended to a name, ".exe".
const std::string& pathVariableName();
const std::string& executableSuffix();

// Returns the path of the program `name`; with `directoryOnly` that of its directory; empty if
// there is none.
//
// An absolute name is tried as it is. To any other ".exe" is appended, whatever it looks like, and
// it is tried in each directory of the variable PATH in order; the current directory is not
// searched unless PATH names it. An absent or empty variable names no directory.
//
// Throws OsError if the variable can't be read.
std::string findInPath(const std::string& name, bool directoryOnly = false);

}  // namespace vek::fs
