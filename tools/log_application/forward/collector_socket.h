// log_application::CollectorSocket: the connection to a log collector. It never blocks for long.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "tools/log_application/forward/collector_resolver.h"
#include "vek/net/data_socket.h"
#include "vek/net/ip_socket.h"

namespace log_application {

// Not thread-safe. Operations throw vek::NetError with the system's number.
class CollectorSocket : public vek::net::IPSocketT<vek::net::DataSocket> {
  public:
    // Connects to `address`; blocks for up to `limitMs` milliseconds, or until `isOver`, which is
    // called every 50 ms, returns true; then throws with 10060 (timed out). Turns on keep-alive
    // probes: a minute of silence, then one each 5 seconds.
    CollectorSocket(const RawAddress& address, std::int64_t limitMs,
                    const std::function<bool()>& isOver);

    struct Ready {
        bool toRead = false;
        bool toWrite = false;
    };

    // Blocks for up to `limitMs` milliseconds until something can be written if `toWrite` is set,
    // otherwise until something can be read. Returns both, but `toWrite` only if it was set. Calls
    // select.
    Ready waitFor(bool toWrite, std::int64_t limitMs);

    // Writes as much of `bytes` as the system takes at once. Returns how much that is. Calls
    // sendto.
    std::size_t writeSome(const std::string& bytes);

    // Reads what the collector has sent, and drops it: a collector has nothing to say. Doesn't
    // block after `waitFor`. Returns false if the collector has closed its side.
    bool discard();

    // No more will be written. Calls shutdown.
    void endWriting() { shutdown(true, false); }

  private:
    enum class Event { connected, readable, writable };

    bool isReady(Event event, std::int64_t limitMs);
    void waitForConnection(std::int64_t limitMs, const std::function<bool()>& isOver);
};

}  // namespace log_application
