#include "vek/net/tcp_listener.h"

#include "vek/base/windows.h"
#include "vek/net/socket_error.h"

namespace vek::net {

void TCPListener::listen(int backlog) {
    if (::listen(handle, backlog) == SOCKET_ERROR) {
        throwSocketError(SocketCall::other);
    }
}

SocketHandle TCPListener::accept() {
    const NativeSocket accepted = ::accept(handle, nullptr, nullptr);
    if (accepted == invalidSocket) {
        throwSocketError(SocketCall::other);
    }
    keepFromChildren(accepted);
    return SocketHandle(accepted);
}

}  // namespace vek::net
