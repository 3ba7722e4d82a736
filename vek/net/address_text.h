// Converts raw socket addresses to text and back. Numeric only: never looks up a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vek::net {

// The NetError code for an invalid argument. This layer's own number; Winsock never returns it.
inline constexpr std::uint32_t invalidArgument = 22;

// The layout of an address family in its raw bytes, and the length of its text.
struct AddressForm {
    int family;            // AF_INET or AF_INET6
    std::size_t offset;    // of the address in the raw bytes
    std::size_t size;      // of the address, in bytes
    std::size_t textSize;  // of the buffer for the text, in bytes
};

inline constexpr AddressForm ip4Form = {2, 4, 4, 22};
// No address class of the framework uses this one.
inline constexpr AddressForm ip6Form = {23, 8, 16, 65};

// Returns the text of the address at `raw`, without the port. Calls inet_ntop. Throws NetError with
// `invalidArgument` if that fails.
std::string addressText(const AddressForm& form, const void* raw);

// Parses `text` and writes the address into `raw`; other bytes of `raw` don't change. Calls
// inet_pton. Throws NetError with `invalidArgument` if `text` is no numeric address; `raw` doesn't
// change then.
void parseAddress(const AddressForm& form, const std::string& text, void* raw);

}  // namespace vek::net
