// log_application::Selection: which processes a command is for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/log_application/connection/endpoint.h"

namespace log_application {

// Which processes are meant: those of `connect`, and those found that have one of the names or of
// the ids. With nothing given, whichever are found.
struct Selection {
    std::vector<std::string> names;
    std::vector<std::uint32_t> pids;
    std::vector<Endpoint> connect;
    std::vector<Endpoint> hosts;  // where to ask; empty: on this host, and by broadcast
    bool all = false;             // all that are found may be changed

    bool isEmpty() const { return names.empty() && pids.empty() && connect.empty(); }
    bool needsDiscovery() const { return connect.empty() || !names.empty() || !pids.empty(); }
};

}  // namespace log_application
