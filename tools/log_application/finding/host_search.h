// The search for processes, by UDP and in the port tables of this host.
#pragma once

#include <vector>

#include "tools/log_application/connection/process.h"
#include "tools/log_application/finding/selection.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// What a search has found.
struct SearchResult {
    // Each once, sorted by name and pid.
    std::vector<Process> processes;

    // False if there may be more processes of this host than were found.
    bool complete = false;
};

// Returns the processes that answer at `selection.hosts`; names and ids of `selection` don't count.
// Without hosts it searches everywhere as `discover` does, and adds every other process of this
// host that holds the discovery port: a datagram to 127.0.0.1 reaches only one of them, but
// `selection.tables` know them all. For each of these it
//
// - sends a request with its pid to the address of its discovery port, for its name. Without an
//   answer the name is that of its program, and marked so;
// - connects to the ports on which it listens, until one answers as a log service. No port of
//   another process is connected to. If none is known the process has no endpoint.
//
// Blocks for the time of `discover`, and for hidden processes up to `hiddenTimeMs` longer for their
// names and `portTimeMs` for each port that accepts and doesn't answer. Less if `stop` is
// requested. Throws what `discover` throws.
SearchResult searchProcesses(const Selection& selection, StopSignal& stop);

inline constexpr std::int64_t hiddenTimeMs = 300;
inline constexpr std::int64_t portTimeMs = 1000;

}  // namespace log_application
