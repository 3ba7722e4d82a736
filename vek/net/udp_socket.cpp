#include "vek/net/udp_socket.h"

#include "vek/base/windows.h"
#include "vek/net/socket_error.h"

namespace vek::net {

UDPSocket::UDPSocket(bool ip6) : IPSocketT(ip6, datagramType, 0) {}

void UDPSocket::ignoreLostReceivers() {
    // Not in the headers of every compiler.
    constexpr DWORD udpConnectionReset = IOC_IN | IOC_VENDOR | 12;
    BOOL reported = FALSE;
    DWORD outputSize = 0;
    if (WSAIoctl(handle, udpConnectionReset, &reported, sizeof reported, nullptr, 0, &outputSize,
                 nullptr, nullptr) == SOCKET_ERROR) {
        throwSocketError(SocketCall::other);
    }
}

bool UDPSocket::isDatagram() const {
    return true;
}

bool UDPSocket::isStream() const {
    return false;
}

bool UDPSocket::isReliable() const {
    return false;
}

bool UDPSocket::isLossy() const {
    return true;
}

}  // namespace vek::net
