// vek::HexDump: bytes for a stream, as pairs of hexadecimal digits.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

namespace vek {

// The bytes to print, and how. They are not copied and must outlive the printing.
struct HexDump {
    const void* data = nullptr;     // may be null
    std::int32_t length = 0;        // bytes; 0 or less prints none
    std::int32_t bytesPerLine = 0;  // 0 or less: all in one line
    std::string separator = {};     // between the bytes of one line
};

// Prints each byte as two digits, right-aligned and filled with "0", with the separator between the
// bytes of a line and a newline between lines; "nullptr" for null data. Other flags of the stream
// apply, such as std::uppercase; its fill and flags are restored. A width that was set before
// applies to "nullptr" but not to bytes.
std::ostream& operator<<(std::ostream& stream, const HexDump& dump);

}  // namespace vek
