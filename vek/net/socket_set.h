// vek::net::SocketSet: the sockets that a select waits for.
#pragma once

#include <cstdint>

#include "vek/net/native_socket.h"

namespace vek::net {

// A plain value: a copy is a set of its own. Owns none of its sockets. After a select it holds the
// ready ones only. No operation throws.
struct SocketSet {
    static constexpr std::uint32_t capacity = 64;

    // The largest handle ever added, also one that found no room. `clear` doesn't lower it.
    std::uint32_t maxHandle = 0;

    // From here on the layout is that of the system's fd_set.
    std::uint32_t count = 0;
    NativeSocket handles[capacity] = {};

    // Adds `handle`, unless it is in the set or is the invalid handle. A full set drops it, and
    // tells nobody, deliberately.
    void add(NativeSocket handle);

    // Empties the set, for filling it anew.
    void clear() { count = 0; }

    // Stands on __WSAFDIsSet.
    bool isSet(NativeSocket handle) const;

    // What select is told as the number of handles: one more than the largest `maxHandle`. Each set
    // may be null.
    static std::uint32_t handleCount(const SocketSet* reading, const SocketSet* writing,
                                     const SocketSet* errors);
};

}  // namespace vek::net
