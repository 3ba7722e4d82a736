#include "vek/net/ip4_address.h"

#include "vek/net/address_text.h"

namespace vek::net {

static_assert(sizeof(sockaddr_in) == 16);
static_assert(AF_INET == ip4Form.family && offsetof(sockaddr_in, sin_addr) == ip4Form.offset);

IP4Address::IP4Address() {
    raw.sin_family = AF_INET;
    sockaddr = &raw;
    length = sizeof raw;
}

IP4Address::IP4Address(const IP4Address& other) : IPAddressBase(other), raw(other.raw) {
    sockaddr = &raw;
}

IP4Address& IP4Address::operator=(const IP4Address& other) {
    raw = other.raw;
    length = other.length;
    return *this;
}

void IP4Address::prepare() {}

std::string IP4Address::toString() const {
    return addressText(ip4Form, &raw);
}

void IP4Address::fromString(const std::string& text) {
    parseAddress(ip4Form, text, &raw);
}

std::uint16_t IP4Address::port() const {
    return ntohs(raw.sin_port);
}

void IP4Address::setPort(const std::uint16_t& port) {
    raw.sin_port = htons(port);
}

void IP4Address::setAddress(std::uint32_t address) {
    raw.sin_addr.s_addr = htonl(address);
}

}  // namespace vek::net
