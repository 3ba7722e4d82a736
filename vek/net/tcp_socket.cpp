#include "vek/net/tcp_socket.h"

#include <algorithm>
#include <limits>

#include "vek/base/windows.h"
#include "vek/net/socket_error.h"

// Needs windows.h first.
#include <mstcpip.h>

namespace vek::net {

namespace {

static_assert(AF_INET == ip4Domain && AF_INET6 == ip6Domain);
static_assert(SOCK_STREAM == streamType && SOCK_DGRAM == datagramType);
static_assert(SIO_KEEPALIVE_VALS == 0x98000004 && sizeof(tcp_keepalive) == 12);

std::uint32_t milliseconds(std::int64_t seconds) {
    constexpr std::int64_t limit = std::numeric_limits<std::uint32_t>::max();
    // Cut first, so that the product has room.
    return static_cast<std::uint32_t>(
        std::min(limit, std::clamp<std::int64_t>(seconds, 0, limit) * 1000));
}

}  // namespace

std::array<std::uint32_t, 3> keepAliveInput(const KeepAliveTimes& times) {
    return {1, milliseconds(times.idleSeconds), milliseconds(times.intervalSeconds)};
}

TCPSocket::TCPSocket(SocketHandle&& accepted) : IPSocketT(accepted.take()) {}

void TCPSocket::setNoDelay() {
    setFlag(IPPROTO_TCP, TCP_NODELAY, true);
}

void TCPSocket::setKeepAliveTimes(const KeepAliveTimes& times) {
    auto input = keepAliveInput(times);
    DWORD outputSize = 0;
    if (WSAIoctl(handle, SIO_KEEPALIVE_VALS, input.data(), sizeof input, nullptr, 0, &outputSize,
                 nullptr, nullptr) == SOCKET_ERROR) {
        throwSocketError(SocketCall::other);
    }
}

}  // namespace vek::net
