// vek::net::IP4Address: an IPv4 address and a port.
#pragma once

#include "vek/base/windows.h"
#include "vek/net/ip_address_base.h"

namespace vek::net {

// A copyable value. `sockaddr` points to the object's own sockaddr_in of 16 bytes.
class IP4Address : public IPAddressBase {
  public:
    // The wildcard address 0.0.0.0 with port 0.
    IP4Address();
    IP4Address(const IP4Address& other);
    IP4Address& operator=(const IP4Address& other);
    ~IP4Address() override = default;

    void prepare() override;
    std::string toString() const override;
    void fromString(const std::string& text) override;
    std::uint16_t port() const override;

    // Returns the port as stored, in network byte order.
    std::uint16_t rawPort() const { return raw.sin_port; }

    // Set the port, given in host byte order and in network byte order.
    void setPort(const std::uint16_t& port);
    void setRawPort(const std::uint16_t& port) { raw.sin_port = port; }

    // Set the address, given in host byte order and in network byte order. setAddress(0x7F000001)
    // sets the loopback address.
    void setAddress(std::uint32_t address);
    void setRawAddress(std::uint32_t address) { raw.sin_addr.s_addr = address; }

  private:
    sockaddr_in raw = {};
};

}  // namespace vek::net
