// log_application::PortTables: which process holds which port of this host.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/connection/endpoint.h"

namespace log_application {

// A port and the process that holds it.
struct HeldPort {
    std::uint32_t pid = 0;  // 0 if the system doesn't know the process
    Endpoint endpoint;      // the bound address, "0.0.0.0" for all addresses
};

// A seam: the tests script what a host may report. Not thread-safe, without state.
class PortTables {
  public:
    virtual ~PortTables() = default;

    // The IPv4 UDP sockets of all processes. None if the system refuses.
    virtual std::optional<std::vector<HeldPort>> udpSockets() const = 0;

    // The IPv4 TCP listeners of all processes. None if the system refuses.
    virtual std::optional<std::vector<HeldPort>> tcpListeners() const = 0;

    // The file name of the process's program without folder and ".exe"; empty if the system
    // refuses or the process has ended.
    virtual std::string programName(std::uint32_t pid) const = 0;
};

// The tables of the system. They call GetExtendedUdpTable, GetExtendedTcpTable, and
// QueryFullProcessImageNameA. Wine knows the process of a socket only after that process has used
// the socket in certain ways.
const PortTables& systemPortTables();

}  // namespace log_application
