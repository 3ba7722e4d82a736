// The search for processes, by UDP.
#pragma once

#include <vector>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/connection/process.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// How often each place is asked, since datagrams get lost, how long after one another, and how long
// answers are taken in all, in milliseconds.
inline constexpr int discoveryRounds = 4;
inline constexpr std::int64_t discoveryRoundMs = 150;
inline constexpr std::int64_t discoveryTimeMs = 800;

// The processes that answer at `hosts`, or, without any, on the discovery port of 127.0.0.1 and of
// the broadcast addresses; sorted by name and pid, each once. Ends early once `stop` is requested.
//
// Several processes of one host share the port on 127.0.0.1, and a datagram to it reaches one of
// them only; broadcasts reach those that listen on all addresses.
//
// Throws Failure (connection lost) if the question can be sent nowhere, and what Socket throws.
std::vector<Process> discover(const std::vector<Endpoint>& hosts, StopSignal& stop);

}  // namespace log_application
