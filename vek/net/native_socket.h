// The type of socket handles, for headers that don't include the system's.
#pragma once

#include <cstdint>

namespace vek::net {

// The same type as SOCKET.
using NativeSocket = std::uintptr_t;

// INVALID_SOCKET: all bits set.
inline constexpr NativeSocket invalidSocket = ~NativeSocket{0};

}  // namespace vek::net
