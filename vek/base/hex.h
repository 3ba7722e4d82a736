// Bytes as hexadecimal digits, and back. Safe from any thread; throw nothing but std::bad_alloc.
#pragma once

#include <cstddef>
#include <string>

namespace vek {

// Two digits for each of the `length` bytes at `data`, with `separator` between the bytes unless it
// is 0. Without bytes the result is empty; for a null `data` with a `length` it is "<null>".
std::string hexEncode(const void* data, std::size_t length, char separator, bool upper);

// The bytes that the digits of `text` stand for, in either case. Blanks, tabs, line feeds and
// colons are left out wherever they stand. Text that isn't made of pairs of digits gives an empty
// result, which can't be told from that of an empty text.
//
// A pair is read as strtol reads it, deliberately: "+a" and other white space before a digit give
// that digit's value, "-1" gives 0xFF.
std::string hexDecode(const std::string& text);

}  // namespace vek
