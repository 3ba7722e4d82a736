// Programs found by the search path of the environment.
#pragma once

#include <string>

namespace vek::fs {

// The variable that holds the search path, "PATH", and what is appended to a name that is looked
// for, ".exe".
const std::string& pathVariableName();
const std::string& executableSuffix();

// The path of the program `name`; with `directoryOnly` that of its directory; empty if there is
// none.
//
// An absolute name is tried as it stands. Any other gets ".exe" appended, whatever it looks like,
// and is tried in each directory of the variable PATH in order; the current directory isn't among
// them by itself. An absent or empty variable names no directory.
//
// Throws OsError if the variable can't be read.
std::string findInPath(const std::string& name, bool directoryOnly = false);

}  // namespace vek::fs
