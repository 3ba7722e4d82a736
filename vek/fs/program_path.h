// Where the executable of this process stands.
#pragma once

#include <string>

namespace vek {

// The directory of the executable, without a separator at its end. Stands on GetModuleFileNameA.
//
// Throws OsError: with the system's number, or with 111 (ERROR_BUFFER_OVERFLOW) for a path of 260
// bytes or more. Safe from any thread.
std::string programDirectory();

}  // namespace vek
