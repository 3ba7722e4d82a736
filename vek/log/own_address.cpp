#include "vek/log/own_address.h"

#include "vek/exception.h"
#include "vek/net/data_socket.h"
#include "vek/net/ip4_address.h"
#include "vek/net/ip_socket.h"

namespace vek::log {

bool isOwnAddress(const std::string& text) {
    net::IP4Address address;
    address.fromString(text);
    net::IPSocketT<net::DataSocket> probe(false, net::streamType, 0);
    try {
        probe.bind(address);
    } catch (const NoSuchAddress&) {
        return false;
    }
    return true;
}

}  // namespace vek::log
