// vek::net::TCPListener: accepts TCP connections.
#pragma once

#include "vek/net/ip_socket.h"
#include "vek/net/socket.h"
#include "vek/net/socket_handle.h"

namespace vek::net {

class TCPListener : public IPSocketT<Socket> {
  public:
    explicit TCPListener(bool ip6) : IPSocketT(ip6, streamType, 0) {}

    // Calls listen: up to about `backlog` connections may wait for `accept`.
    void listen(int backlog);

    // Blocks until a client has connected. Returns the connection, owned by the caller; child
    // processes don't inherit it. Calls accept and SetHandleInformation.
    SocketHandle accept();
};

}  // namespace vek::net
