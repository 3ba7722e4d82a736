// The names of this computer.
#pragma once

#include <string>

namespace vek {

// `type` 0 is the DNS host name, 1 the fully qualified DNS name, 2 the NetBIOS name. Another type
// throws UsageError.
//
// The name is asked for with room for 15 characters, deliberately: a longer one throws OsError with
// ERROR_MORE_DATA. Stands on GetComputerNameExA. Safe from any thread.
std::string hostName(int type);

}  // namespace vek
