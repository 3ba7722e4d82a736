// vek::net::IPAddressBase: the base of the numeric IP addresses.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "vek/net/address.h"

namespace vek::net {

class IPAddressBase : public Address {
  public:
    virtual ~IPAddressBase() = default;

    // Returns the address as text, without the port. Calls inet_ntop. Throws NetError with code 22
    // if that fails.
    virtual std::string toString() const = 0;

    // Sets the address from `text`; the port doesn't change. Calls inet_pton. Throws NetError with
    // code 22 for any other text, such as a host name, "localhost", or an address followed by a
    // port; the address doesn't change then.
    virtual void fromString(const std::string& text) = 0;

    // Returns the port in host byte order.
    virtual std::uint16_t port() const = 0;

    // As `fromString`, but returns false where that throws NetError with code 22. Other exceptions
    // pass through.
    bool tryFromString(const std::string& text);

  protected:
    IPAddressBase() = default;
    IPAddressBase(const IPAddressBase&) = default;
    IPAddressBase& operator=(const IPAddressBase&) = default;
};

// Writes `toString()` and, if the port isn't 0, ":" and the port: "127.0.0.1:49733".
std::ostream& operator<<(std::ostream& stream, const IPAddressBase& address);

}  // namespace vek::net
