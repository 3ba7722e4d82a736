// vek::HexDump: bytes for a stream, as pairs of hexadecimal digits.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

namespace vek {

// What is printed, and how. The bytes are not copied and must outlive the printing.
struct HexDump {
    const void* data = nullptr;     // may be null
    std::int32_t length = 0;        // bytes; 0 or less prints none
    std::int32_t bytesPerLine = 0;  // 0 or less: all in one line
    std::string separator = {};     // between the bytes of one line
};

// Prints each byte as two digits, right-aligned and filled up with "0", with the separator between
// two of a line and a newline between lines; "nullptr" for null data. Other flags of the stream
// hold, std::uppercase among them; its fill and flags are afterwards as they were. A width set
// before holds for "nullptr", and not for bytes.
std::ostream& operator<<(std::ostream& stream, const HexDump& dump);

}  // namespace vek
