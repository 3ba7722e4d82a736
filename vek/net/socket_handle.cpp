#include "vek/net/socket_handle.h"

#include "vek/base/windows.h"

namespace vek::net {

SocketHandle::~SocketHandle() {
    if (!released && handle != invalidSocket) {
        closesocket(handle);
    }
}

NativeSocket SocketHandle::take() {
    if (released) {
        return invalidSocket;
    }
    released = true;
    return handle;
}

}  // namespace vek::net
