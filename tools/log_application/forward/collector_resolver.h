// Looks up the addresses of a collector.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/log_application/forward/collector_address.h"

namespace log_application {

// An address as the system's calls take it: the bytes of a sockaddr.
struct RawAddress {
    std::string bytes;
    bool isIp6 = false;
};

// Returns the TCP addresses of `collector`, in the system's order; at least one. A name is looked
// up on a thread of its own, as the system offers no way to end that: returns after `limitMs`
// milliseconds at the latest, and soon after `isOver` returns true, which is called every 50 ms.
// Calls getaddrinfo. Throws vek::NetError with the system's number, or 10060 (timed out).
std::vector<RawAddress> resolve(const CollectorAddress& collector, std::int64_t limitMs,
                                const std::function<bool()>& isOver);

}  // namespace log_application
