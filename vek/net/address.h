// vek::net::Address: a socket address in the form that the Winsock calls take.
#pragma once

#include <cstdint>

namespace vek::net {

// A plain value. Not thread-safe.
class Address {
  public:
    // Called by the socket layer before a system call fills the address. An address of variable
    // size would make room here; these classes do nothing.
    virtual void prepare();

    // The raw bytes, not owned: null for EmptyAddress, otherwise inside the object.
    void* sockaddr = nullptr;

    // The number of valid bytes at `sockaddr`.
    std::int32_t length = 0;

  protected:
    constexpr Address() = default;
    constexpr Address(const Address&) = default;
    constexpr Address& operator=(const Address&) = default;
    constexpr ~Address() = default;
};

// No address: null and 0 bytes.
class EmptyAddress final : public Address {
  public:
    constexpr EmptyAddress() = default;
};

// The argument that means "no address". DataSocket::sendTo compares its address, not its value.
// Initialised before main.
extern const EmptyAddress emptyAddress;

}  // namespace vek::net
