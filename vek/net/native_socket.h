// The system's socket handles, for headers that don't take the system's own along.
#pragma once

#include <cstdint>

namespace vek::net {

// The same type as the system's SOCKET.
using NativeSocket = std::uintptr_t;

// The invalid handle: all bits set.
inline constexpr NativeSocket invalidSocket = ~NativeSocket{0};

}  // namespace vek::net
