// The system's words for one of its error numbers.
#pragma once

#include <cstdint>
#include <string>

namespace vek {

// The text of the system error `code`, in the language of the machine, without its line end. Stands
// on FormatMessageA.
//
// For a number that the system has no text for, the result is "<unknown-error>", and a line on
// std::cerr says so. Throws nothing but std::bad_alloc. Safe from any thread.
std::string osErrorText(std::uint32_t code);

}  // namespace vek
