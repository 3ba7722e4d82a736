#include "vek/net/socket_set.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "vek/base/windows.h"

namespace vek::net {

static_assert(std::is_same_v<NativeSocket, SOCKET> && invalidSocket == INVALID_SOCKET);
static_assert(SocketSet::capacity == FD_SETSIZE);
static_assert(offsetof(SocketSet, handles) - offsetof(SocketSet, count) ==
              offsetof(fd_set, fd_array));
static_assert(sizeof(SocketSet) - offsetof(SocketSet, count) == sizeof(fd_set));

void SocketSet::add(NativeSocket handle) {
    if (handle == invalidSocket) {
        return;
    }
    NativeSocket* const end = handles + count;
    if (std::find(handles, end, handle) == end && count < capacity) {
        handles[count++] = handle;
    }
    maxHandle = std::max(maxHandle, static_cast<std::uint32_t>(handle));
}

bool SocketSet::isSet(NativeSocket handle) const {
    // __WSAFDIsSet takes a pointer to non-const but only reads.
    auto* const set = reinterpret_cast<fd_set*>(const_cast<std::uint32_t*>(&count));
    return __WSAFDIsSet(handle, set) != 0;
}

std::uint32_t SocketSet::handleCount(const SocketSet* reading, const SocketSet* writing,
                                     const SocketSet* errors) {
    std::uint32_t largest = 0;
    for (const SocketSet* const set : {reading, writing, errors}) {
        if (set != nullptr) {
            largest = std::max(largest, set->maxHandle);
        }
    }
    return largest + 1;
}

}  // namespace vek::net
