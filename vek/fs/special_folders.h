// The directories that the system sets aside for a purpose, without a separator at their end. Safe
// from any thread.
#pragma once

#include <string>

namespace vek::fs {

// For the data of programs that all users share; for the user's documents; of the user.
//
// Stand on SHGetSpecialFolderPathA, which makes no directory. Throw OsError, and SharedLibError
// where the shell's library can't be loaded.
std::string commonAppData();
std::string personalDirectory();
std::string profileDirectory();

// For temporary files, as the environment says; nobody has looked whether it exists. Stands on
// GetTempPathA. Throws OsError, with 111 (ERROR_BUFFER_OVERFLOW) for one of 260 bytes or more.
std::string temporaryDirectory();

// Not made for this platform. Both throw RuntimeError with "not implemented".
std::string runtimeDirectory();
std::string cacheDirectory();

}  // namespace vek::fs
