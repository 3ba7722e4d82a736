// Where the executable of this process stands, and its name.
#pragma once

#include <string>

namespace vek {

// The whole path of the executable. Stands on GetModuleFileNameA. Throws as programDirectory does.
// Safe from any thread.
std::string programPath();

// The directory of the executable, without a separator at its end. Stands on GetModuleFileNameA.
//
// Throws OsError: with the system's number, or with 111 (ERROR_BUFFER_OVERFLOW) for a path of 260
// bytes or more. Safe from any thread.
std::string programDirectory();

// The name of the executable up to its first dot: "tolmarhlp" for "tolmarhlp.exe". Stands on
// GetModuleFileNameA. Throws as programDirectory does. Safe from any thread.
std::string programName();

}  // namespace vek
