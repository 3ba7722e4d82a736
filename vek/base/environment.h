// The environment of this process, as the system keeps it. The C runtime has a copy of its own,
// which doesn't follow these.
//
// Names and values end at their first zero byte. Safe from any thread: the system protects its
// environment. A failed call throws OsError with GetLastError().
#pragma once

#include <string>

namespace vek {

// Reads the variable `name` into `out`. The result is false, with `out` emptied, if there is none.
// Stands on GetEnvironmentVariableA.
//
// A variable that exists with an empty value throws OsError, deliberately: the system reports it as
// it reports a failure, with an error number of 0. Who only wants to know whether a variable is
// there asks hasEnv.
bool getEnv(const std::string& name, std::string& out);

// Whether the variable `name` exists, also with an empty value. Stands on GetEnvironmentVariableA.
bool hasEnv(const std::string& name);

// Sets the variable `name` for this process and the children that it starts from now on. Stands on
// SetEnvironmentVariableA.
void setEnv(const std::string& name, const std::string& value);

// Removes the variable `name`. Stands on SetEnvironmentVariableA.
void unsetEnv(const std::string& name);

}  // namespace vek
