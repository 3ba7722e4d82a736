// Characters of two bytes in the system's ANSI code page, which is the encoding of every narrow
// path.
//
// In code pages 932, 936, 949 and 950 the second byte of such a character may be 0x5C, a backslash:
// a path is cut only where the backslash is a character of its own.
#pragma once

#include <bitset>
#include <cstddef>
#include <string_view>

namespace vek {

// One bit per byte value: set for a byte that begins a character of two bytes.
using LeadBytes = std::bitset<256>;

// The lead bytes of the ANSI code page of this process. None for a code page of one-byte characters
// and for UTF-8, whose further bytes are all 0x80 or more. Calls GetCPInfo, once. Throws nothing.
// Thread-safe.
const LeadBytes& ansiLeadBytes();

// Whether text[offset] is the second byte of a character. Bytes of the lead range pair up from the
// start of their run, so only the run in front of `offset` is looked at.
inline bool isTrailByte(std::string_view text, std::size_t offset,
                        const LeadBytes& leads = ansiLeadBytes()) {
    std::size_t start = offset;
    while (start > 0 && leads[static_cast<unsigned char>(text[start - 1])]) {
        --start;
    }
    return (offset - start) % 2 != 0;
}

// The offset of the last backslash of `path` that is a character of its own; npos if there is none.
inline std::size_t lastBackslash(std::string_view path, const LeadBytes& leads = ansiLeadBytes()) {
    std::size_t offset = path.rfind('\\');
    while (offset != std::string_view::npos && isTrailByte(path, offset, leads)) {
        offset = path.rfind('\\', offset - 1);  // a trail byte is never the first
    }
    return offset;
}

}  // namespace vek
