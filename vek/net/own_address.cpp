#include "vek/net/own_address.h"

#include "vek/exception.h"
#include "vek/net/data_socket.h"
#include "vek/net/ip4_address.h"
#include "vek/net/ip_socket.h"

namespace vek::net {

bool isOwnAddress(const std::string& text) {
    IP4Address address;
    address.fromString(text);
    IPSocketT<DataSocket> probe(false, streamType, 0);
    try {
        probe.bind(address);
    } catch (const NoSuchAddress&) {
        return false;
    }
    return true;
}

}  // namespace vek::net
