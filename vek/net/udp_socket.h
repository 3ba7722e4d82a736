// vek::net::UDPSocket: sends and receives datagrams.
#pragma once

#include "vek/net/data_socket.h"
#include "vek/net/ip_socket.h"

namespace vek::net {

class UDPSocket : public IPSocketT<DataSocket> {
  public:
    explicit UDPSocket(bool ip6);

    // Stops Windows from reporting that a receiver is gone: it otherwise makes the next receive
    // fail with WSAECONNRESET (10054), whoever's datagram that would have been. Call it once,
    // before the first receive, where a peer may go away. Calls WSAIoctl with SIO_UDP_CONNRESET.
    void ignoreLostReceivers();

    bool isDatagram() const override;
    bool isStream() const override;
    bool isReliable() const override;
    bool isLossy() const override;
};

}  // namespace vek::net
