// Raw socket addresses as text and back; numbers only, no name is ever looked up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vek::net {

// The number of the NetError for an argument that isn't valid. This layer's own way of saying so:
// the system doesn't give it.
inline constexpr std::uint32_t invalidArgument = 22;

// Where a kind of address stands in its raw bytes, and how long its text may be.
struct AddressForm {
    int family;            // the system's number
    std::size_t offset;    // of the address in the raw bytes
    std::size_t size;      // of the address, in bytes
    std::size_t textSize;  // of the buffer for the text, in bytes
};

inline constexpr AddressForm ip4Form = {2, 4, 4, 22};
// No socket of the framework is opened for this one.
inline constexpr AddressForm ip6Form = {23, 8, 16, 65};

// The text of the address at `raw`, which is of the given form; without the port. Throws NetError
// with `invalidArgument` if the system refuses. Stands on inet_ntop.
std::string addressText(const AddressForm& form, const void* raw);

// Writes the address that `text` names to its place in `raw`, and touches nothing else there.
// Throws NetError with `invalidArgument` for any other text; `raw` then stays as it was. Stands on
// inet_pton.
void parseAddress(const AddressForm& form, const std::string& text, void* raw);

}  // namespace vek::net
