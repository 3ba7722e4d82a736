// Decoding of UTF-8 from arbitrary bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace log_application {

struct Character {
    std::uint32_t codePoint;  // the byte itself where `valid` is false
    std::size_t size;         // in bytes; 1 where `valid` is false
    bool valid;
};

// Decodes the character that begins at the byte `at`, which must be below the size of `text`.
// Overlong forms, surrogates, numbers above 0x10FFFF and truncated sequences are invalid: the
// result is then their first byte alone. Throws nothing.
Character decodeUtf8(std::string_view text, std::size_t at);

}  // namespace log_application
