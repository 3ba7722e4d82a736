// log_application::Selection: which processes a command is for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/finding/port_tables.h"

namespace log_application {

// Selects the processes at `connect`, and those found that have one of the names or ids. With none
// of these given, all that are found.
struct Selection {
    std::vector<std::string> names;
    std::vector<std::uint32_t> pids;
    std::vector<Endpoint> connect;
    std::vector<Endpoint> hosts;  // where to search; empty: this host and by broadcast
    // Where the ports of this host are looked up. Not owned.
    const PortTables* tables = &systemPortTables();
    bool all = false;  // allows a change of several processes

    bool isEmpty() const { return names.empty() && pids.empty() && connect.empty(); }
    bool needsDiscovery() const { return connect.empty() || !names.empty() || !pids.empty(); }
};

}  // namespace log_application
