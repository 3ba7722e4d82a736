// Bytes as hexadecimal digits, and back. The functions throw nothing but std::bad_alloc and are
// thread-safe.
#pragma once

#include <cstddef>
#include <string>

namespace vek {

// Returns two digits for each of the `length` bytes at `data`, with `separator` between the bytes
// unless it is 0. Returns an empty text for a `length` of 0, and "<null>" for a null `data` with a
// `length`.
std::string hexEncode(const void* data, std::size_t length, char separator, bool upper);

// Returns the bytes for the digits of `text`, in upper or lower case. Blanks, tabs, line feeds and
// colons are skipped. Any other text than pairs of digits gives an empty result, as an empty text
// does.
//
// Deliberately, a pair is read as strtol reads it: "+a" and other white space before a digit give
// that digit's value, "-1" gives 0xFF.
std::string hexDecode(const std::string& text);

}  // namespace vek
