// The name of this host for syslog messages.
#pragma once

#include <string>

namespace log_application {

// Returns the fully qualified DNS name of this host, of any length; empty if the system has none.
// Calls GetComputerNameExA. Throws nothing but std::bad_alloc.
std::string ownHostName();

}  // namespace log_application
