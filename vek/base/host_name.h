// The names of this computer.
#pragma once

#include <string>

namespace vek {

// Returns the DNS host name for the `type` 0, the fully qualified DNS name for 1, the NetBIOS name
// for 2. Throws UsageError for another type.
//
// The buffer deliberately has room for 15 characters: for a longer name OsError with
// ERROR_MORE_DATA (234) is thrown. Calls GetComputerNameExA. Thread-safe.
std::string hostName(int type);

}  // namespace vek
