#include "vek/net/native_socket.h"

#include "vek/base/windows.h"

namespace vek::net {

void keepFromChildren(NativeSocket socket) {
    SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
}

}  // namespace vek::net
