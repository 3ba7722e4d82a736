// vek::net::SocketSet: the sockets that a select call waits for.
#pragma once

#include <cstdint>

#include "vek/net/native_socket.h"

namespace vek::net {

// A copyable plain value. Doesn't own its sockets. After a select it holds only the ready ones. No
// operation throws.
struct SocketSet {
    static constexpr std::uint32_t capacity = 64;

    // The largest handle ever passed to `add`, even if it was dropped. `clear` doesn't reset it.
    std::uint32_t maxHandle = 0;

    // From here on the layout is that of fd_set.
    std::uint32_t count = 0;
    NativeSocket handles[capacity] = {};

    // Adds `handle` unless it is in the set or is `invalidSocket`. A full set drops it without a
    // report, deliberately.
    void add(NativeSocket handle);

    // Empties the set.
    void clear() { count = 0; }

    // Calls __WSAFDIsSet.
    bool isSet(NativeSocket handle) const;

    // Returns the first argument of select: one more than the largest `maxHandle`. Each set may be
    // null.
    static std::uint32_t handleCount(const SocketSet* reading, const SocketSet* writing,
                                     const SocketSet* errors);
};

}  // namespace vek::net
