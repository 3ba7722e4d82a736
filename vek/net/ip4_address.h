// vek::net::IP4Address: an IPv4 address and a port.
#pragma once

#include "vek/base/windows.h"
#include "vek/net/ip_address_base.h"

namespace vek::net {

// A value that can be copied. `sockaddr` points to the object's own sockaddr_in of 16 bytes.
class IP4Address : public IPAddressBase {
  public:
    // The wildcard address 0.0.0.0, without a port.
    IP4Address();
    IP4Address(const IP4Address& other);
    IP4Address& operator=(const IP4Address& other);
    ~IP4Address() override = default;

    void prepare() override;
    std::string toString() const override;
    void fromString(const std::string& text) override;
    std::uint16_t port() const override;

    // The port as it is stored, in network order.
    std::uint16_t rawPort() const { return raw.sin_port; }

    // Take the port in the machine's order, and in network order.
    void setPort(const std::uint16_t& port);
    void setRawPort(const std::uint16_t& port) { raw.sin_port = port; }

    // Take the address in the machine's order, and in network order: 0x7F000001 is the loopback
    // address for the former.
    void setAddress(std::uint32_t address);
    void setRawAddress(std::uint32_t address) { raw.sin_addr.s_addr = address; }

  private:
    sockaddr_in raw = {};
};

}  // namespace vek::net
