// The system's text for an error number.
#pragma once

#include <cstdint>
#include <string>

namespace vek {

// Returns the text of the system error `code`, in the language of the machine, without its line
// end. Calls FormatMessageA.
//
// If the system has no text for the number, reports that on std::cerr and returns
// "<unknown-error>". Throws nothing but std::bad_alloc. Thread-safe.
std::string osErrorText(std::uint32_t code);

}  // namespace vek
