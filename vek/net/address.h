// vek::net::Address: a socket address in the form that the system's calls take.
#pragma once

#include <cstdint>

namespace vek::net {

// Plain values without a lock: for one thread at a time.
class Address {
  public:
    // Called by the socket layer before the system fills the address in: the place where an address
    // of variable size would make room. Does nothing.
    virtual void prepare();

    // The raw bytes, not owned: null for an address that is none, otherwise inside the object.
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

// The argument that means no address; DataSocket::sendTo knows it by its identity. Stands ready
// ahead of main.
extern const EmptyAddress emptyAddress;

}  // namespace vek::net
