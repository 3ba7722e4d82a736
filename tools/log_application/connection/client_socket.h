// log_application::ClientSocket: a connection to a process that never waits longer than it should.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/program/stop_signal.h"
#include "vek/net/data_socket.h"
#include "vek/net/ip_socket.h"
#include "vek/time/clock.h"

namespace log_application {

// For one thread at a time.
class ClientSocket : public vek::net::IPSocketT<vek::net::DataSocket> {
  public:
    // The milliseconds that a process has to take a connection, and to answer a request.
    static constexpr std::int64_t answerTimeMs = 5000;

    // Not connected. `stopSignal` may be null and has to outlive this. Throws what Socket throws.
    explicit ClientSocket(StopSignal* stopSignal);

    // Connects within `answerTimeMs`. Throws vek::NoPeer if nobody listens there, vek::NetError
    // (10060, timed out) if nobody answers, or with the number of the failure. Stands on connect
    // without blocking, and select.
    void connectTo(const Endpoint& endpoint);

    // From now on reads throw vek::NetError (10060) after so many milliseconds, in all, or never.
    void limitReading(std::optional<std::int64_t> milliseconds);

    // Waits for data within the limit. 0 at the end of the stream, and once the stop is requested.
    std::uint32_t read(void* buffer, std::uint32_t size) override;

  private:
    void setBlocking(bool blocking);
    void waitForConnection();

    StopSignal* const stop;
    std::optional<vek::time::MonotonicClock> deadline;
};

}  // namespace log_application
