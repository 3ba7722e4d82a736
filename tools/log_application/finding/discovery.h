// The search for processes by UDP.
#pragma once

#include <vector>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/connection/process.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// Requests to each address, since datagrams get lost; the time between them, and the time of the
// whole search, in milliseconds.
inline constexpr int discoveryRounds = 4;
inline constexpr std::int64_t discoveryRoundMs = 150;
inline constexpr std::int64_t discoveryTimeMs = 800;

// Sends the request to `hosts`, or without any to the discovery port of 127.0.0.1 and of the
// broadcast addresses. Returns the processes that answer, each once, sorted by name and pid. Blocks
// for `discoveryTimeMs`, less if `stop` is requested.
//
// The processes of a host share the port, and a datagram to 127.0.0.1 reaches only one of them.
// Broadcasts reach those that listen on all addresses.
//
// Throws Failure (exitLost) if no request can be sent, and what Socket throws.
std::vector<Process> discover(const std::vector<Endpoint>& hosts, StopSignal& stop);

struct DiscoveryQuestion {
    std::vector<Endpoint> places;
    std::vector<std::uint32_t> pids;  // only these are to answer; empty: all
    int rounds = discoveryRounds;
    std::int64_t timeMs = discoveryTimeMs;
};

// The same with a request of the caller's.
std::vector<Process> discoverWith(const DiscoveryQuestion& question, StopSignal& stop);

}  // namespace log_application
