// vek::net::TCPSocket: one TCP connection.
#pragma once

#include <array>
#include <cstdint>

#include "vek/net/data_socket.h"
#include "vek/net/ip_socket.h"
#include "vek/net/socket_handle.h"

namespace vek::net {

// The timing of keep-alive probes to a silent peer.
struct KeepAliveTimes {
    std::int64_t idleSeconds = 0;
    std::int64_t intervalSeconds = 0;
    std::int32_t probes = 0;  // has no effect on Windows
};

// Returns the input of SIO_KEEPALIVE_VALS: 1 for on, and both times in milliseconds. A time that
// doesn't fit into 32 bits becomes 0xFFFFFFFF, a negative one 0.
std::array<std::uint32_t, 3> keepAliveInput(const KeepAliveTimes& times);

class TCPSocket : public IPSocketT<DataSocket> {
  public:
    // Takes ownership of the handle in `accepted`.
    explicit TCPSocket(SocketHandle&& accepted);

    // Sets TCP_NODELAY: each write is sent at once.
    void setNoDelay();

    // Turns keep-alive probes on, with these times. Calls WSAIoctl with SIO_KEEPALIVE_VALS.
    void setKeepAliveTimes(const KeepAliveTimes& times);
};

}  // namespace vek::net
