// The system's environment of this process. The C runtime has its own copy, which these functions
// don't change.
//
// Names and values end at their first zero byte. Thread-safe: the system protects its environment.
// A failed call throws OsError with GetLastError().
#pragma once

#include <string>

namespace vek {

// Reads the variable `name` into `out`. Returns false and clears `out` if there is no such
// variable. Calls GetEnvironmentVariableA twice, for the size and for the value; a value that
// another thread makes longer in between is read again.
//
// Deliberately throws OsError in two cases that are no failures: with the number 0 for a variable
// that exists with an empty value, which the system reports like a failure; and with
// ERROR_ENVVAR_NOT_FOUND (203) if another thread removes the variable between the two calls. To
// learn only whether a variable exists, use hasEnv.
bool getEnv(const std::string& name, std::string& out);

// Returns whether the variable `name` exists, also with an empty value. Calls
// GetEnvironmentVariableA.
bool hasEnv(const std::string& name);

// Sets the variable `name` for this process and the children that it starts from now on. Calls
// SetEnvironmentVariableA.
void setEnv(const std::string& name, const std::string& value);

// Removes the variable `name`. Calls SetEnvironmentVariableA.
void unsetEnv(const std::string& name);

}  // namespace vek
