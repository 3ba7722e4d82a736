// vek::net::UDPSocket: a socket for datagrams.
#pragma once

#include "vek/net/data_socket.h"
#include "vek/net/ip_socket.h"

namespace vek::net {

class UDPSocket : public IPSocketT<DataSocket> {
  public:
    explicit UDPSocket(bool ip6);

    bool isDatagram() const override;
    bool isStream() const override;
    bool isReliable() const override;
    bool isLossy() const override;
};

}  // namespace vek::net
