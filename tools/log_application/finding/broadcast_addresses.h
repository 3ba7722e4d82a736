// The addresses by which all hosts near this one are reached.
#pragma once

#include <string>
#include <vector>

namespace log_application {

// The limited broadcast address 255.255.255.255, and that of the network of each interface that is
// up, each once. Throws nothing but std::bad_alloc: without a list of interfaces it is the first
// alone. Winsock has to be started. Stands on WSAIoctl with SIO_GET_INTERFACE_LIST.
std::vector<std::string> broadcastAddresses();

}  // namespace log_application
