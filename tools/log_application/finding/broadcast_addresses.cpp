#include "tools/log_application/finding/broadcast_addresses.h"

#include <algorithm>
#include <array>

#include "vek/base/windows.h"
// Needs windows.h.
#include <ws2tcpip.h>

#include "vek/exception.h"
#include "vek/net/ip4_address.h"
#include "vek/net/udp_socket.h"

namespace log_application {

namespace {

constexpr std::size_t mostInterfaces = 64;

std::string broadcastOf(const INTERFACE_INFO& interfaceInfo) {
    const u_long address = interfaceInfo.iiAddress.AddressIn.sin_addr.s_addr;
    const u_long mask = interfaceInfo.iiNetmask.AddressIn.sin_addr.s_addr;
    vek::net::IP4Address broadcast;
    broadcast.setRawAddress(address | ~mask);
    return broadcast.toString();
}

void addInterfaces(std::vector<std::string>& addresses) {
    const vek::net::UDPSocket socket(false);
    std::array<INTERFACE_INFO, mostInterfaces> interfaces = {};
    DWORD bytes = 0;
    if (WSAIoctl(socket.nativeHandle(), SIO_GET_INTERFACE_LIST, nullptr, 0, interfaces.data(),
                 sizeof interfaces, &bytes, nullptr, nullptr) != 0) {
        return;
    }
    for (std::size_t i = 0; i < bytes / sizeof(INTERFACE_INFO); ++i) {
        const std::string address = broadcastOf(interfaces[i]);
        if ((interfaces[i].iiFlags & IFF_UP) != 0 &&
            std::ranges::find(addresses, address) == addresses.end()) {
            addresses.push_back(address);
        }
    }
}

}  // namespace

std::vector<std::string> broadcastAddresses() {
    std::vector<std::string> addresses = {"255.255.255.255"};
    try {
        addInterfaces(addresses);
    } catch (const vek::Exception&) {
        // 255.255.255.255 remains.
    }
    return addresses;
}

}  // namespace log_application
