// log_application::ClientSocket: a TCP connection with time limits, interrupted by the stop.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/program/stop_signal.h"
#include "vek/net/data_socket.h"
#include "vek/net/ip_socket.h"
#include "vek/time/clock.h"

namespace log_application {

// Not thread-safe.
class ClientSocket : public vek::net::IPSocketT<vek::net::DataSocket> {
  public:
    // The time limit of a connect, of an answer and of a send, in milliseconds.
    static constexpr std::int64_t answerTimeMs = 5000;

    // Makes a socket that isn't connected. `stopSignal` may be null; it isn't owned and must
    // outlive this. Throws what Socket throws.
    explicit ClientSocket(StopSignal* stopSignal);

    // Connects; blocks for up to `answerTimeMs`. Throws vek::NoPeer if nobody listens there,
    // vek::NetError with 10060 (timed out) if there is no answer or the stop is requested, else
    // vek::NetError with the system's number. Calls connect on a non-blocking socket, and select.
    // For a loopback address it turns repeated attempts off (WSAIoctl, SIO_TCP_INITIAL_RTO), so
    // that a refusal comes at once.
    void connectTo(const Endpoint& endpoint);

    // Limits all reads from now on to `milliseconds` in total; later ones throw vek::NetError with
    // 10060 (timed out). Without a value reads block without limit.
    void limitReading(std::optional<std::int64_t> milliseconds);

    // Blocks until there is data, within the limit. Returns 0 at the end of the stream and once the
    // stop is requested. Calls select and recvfrom.
    std::uint32_t read(void* buffer, std::uint32_t size) override;

  private:
    void setBlocking(bool blocking);
    void waitForConnection();

    StopSignal* const stop;
    std::optional<vek::time::MonotonicClock> deadline;
};

}  // namespace log_application
