// vek::net::IPAddressBase: what the numeric IP addresses share.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "vek/net/address.h"

namespace vek::net {

class IPAddressBase : public Address {
  public:
    virtual ~IPAddressBase() = default;

    // The address as text, without the port. Throws NetError with 22 if the system refuses. Stands
    // on inet_ntop.
    virtual std::string toString() const = 0;

    // Takes the address from `text` and leaves the port alone. A host name is no address, nor is
    // "localhost", nor one with a port behind it: for any such text throws NetError with 22, and
    // the address stays as it was. Stands on inet_pton.
    virtual void fromString(const std::string& text) = 0;

    // The port in the machine's order.
    virtual std::uint16_t port() const = 0;

    // As `fromString`, but gives false for a text that is no address. What `fromString` throws
    // beside a NetError with 22 passes through.
    bool tryFromString(const std::string& text);

  protected:
    IPAddressBase() = default;
    IPAddressBase(const IPAddressBase&) = default;
    IPAddressBase& operator=(const IPAddressBase&) = default;
};

// `toString()`, and, if there is a port, ":" and the port: "127.0.0.1:49733".
std::ostream& operator<<(std::ostream& stream, const IPAddressBase& address);

}  // namespace vek::net
