// vek::net::TCPSocket: one TCP connection.
#pragma once

#include <array>
#include <cstdint>

#include "vek/net/data_socket.h"
#include "vek/net/ip_socket.h"
#include "vek/net/socket_handle.h"

namespace vek::net {

// When a silent peer is asked whether it lives.
struct KeepAliveTimes {
    std::int64_t idleSeconds = 0;
    std::int64_t intervalSeconds = 0;
    std::int32_t probes = 0;  // not taken by this system
};

// What the system is told: that it is on, and both times in milliseconds. A time beyond its 32 bits
// becomes the largest there is, a negative one 0.
std::array<std::uint32_t, 3> keepAliveInput(const KeepAliveTimes& times);

class TCPSocket : public IPSocketT<DataSocket> {
  public:
    // Takes the handle of `accepted`.
    explicit TCPSocket(SocketHandle&& accepted);

    // Lets each write leave at once.
    void setNoDelay();

    // Turns the asking on, with these times. Stands on WSAIoctl with SIO_KEEPALIVE_VALS.
    void setKeepAliveTimes(const KeepAliveTimes& times);
};

}  // namespace vek::net
