#include "vek/net/udp_socket.h"

namespace vek::net {

UDPSocket::UDPSocket(bool ip6) : IPSocketT(ip6, datagramType, 0) {}

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
