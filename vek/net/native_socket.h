// Socket handles, for headers that don't include the system's.
#pragma once

#include <cstdint>

namespace vek::net {

// The same type as SOCKET.
using NativeSocket = std::uintptr_t;

// INVALID_SOCKET: all bits set.
inline constexpr NativeSocket invalidSocket = ~NativeSocket{0};

// Makes an open handle non-inheritable: a child process that had a copy of a socket would keep its
// port and its connection open. Calls SetHandleInformation. Failures are ignored: the sockets of
// some third-party providers aren't system handles, and can't be inherited either.
void keepFromChildren(NativeSocket socket);

}  // namespace vek::net
