// The broadcast addresses of this host.
#pragma once

#include <string>
#include <vector>

namespace log_application {

// Returns 255.255.255.255 and the broadcast address of each interface that is up, each once. Calls
// WSAIoctl with SIO_GET_INTERFACE_LIST; if that fails the result is 255.255.255.255 alone. Winsock
// must be started. Throws nothing but std::bad_alloc.
std::vector<std::string> broadcastAddresses();

}  // namespace log_application
