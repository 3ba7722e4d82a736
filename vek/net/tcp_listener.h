// vek::net::TCPListener: where TCP connections come in.
#pragma once

#include "vek/net/ip_socket.h"
#include "vek/net/socket.h"
#include "vek/net/socket_handle.h"

namespace vek::net {

class TCPListener : public IPSocketT<Socket> {
  public:
    explicit TCPListener(bool ip6) : IPSocketT(ip6, streamType, 0) {}

    // Lets up to about `backlog` connections wait for `accept`.
    void listen(int backlog);

    // Blocks until there is a connection, and gives it to the caller.
    SocketHandle accept();
};

}  // namespace vek::net
