// The system's directories for certain purposes, without a separator at their end. Thread-safe.
#pragma once

#include <string>

namespace vek::fs {

// For the data of programs, shared by all users; for the user's documents; the user's profile.
//
// Call SHGetSpecialFolderPathA, which creates no directory. Throw OsError, and SharedLibError if
// shell32 can't be loaded.
std::string commonAppData();
std::string personalDirectory();
std::string profileDirectory();

// For temporary files, as the environment names it; it may not exist. Calls GetTempPathA. Throws
// OsError, with 111 (ERROR_BUFFER_OVERFLOW) for one of 260 bytes or more.
std::string temporaryDirectory();

// Not implemented for this platform. Both throw RuntimeError with "not implemented".
std::string runtimeDirectory();
std::string cacheDirectory();

}  // namespace vek::fs
