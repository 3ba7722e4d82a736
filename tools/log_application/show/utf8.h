// Reading UTF-8, whatever the bytes are.
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

// The character at `at`, which has to be below the size of `text`. Overlong forms, surrogates,
// numbers beyond 0x10FFFF and cut sequences are no characters: their first byte is given as an
// invalid one. Throws nothing.
Character decodeUtf8(std::string_view text, std::size_t at);

}  // namespace log_application
