// Bytes as hexadecimal digits, and what isn't.
#include <cctype>

#include "tests/native/fuzz/fuzz.h"
#include "vek/base/hex.h"
#include "vek/base/hex_dump.h"

using vek::test::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = vek::test::textOf(data, size);
    for (const char separator : {'\0', ' ', ':', '\t', '\n'}) {
        for (const bool upper : {false, true}) {
            const std::string digits = vek::hexEncode(data, size, separator, upper);
            require(vek::hexDecode(digits) == text, "what was encoded decodes");
        }
    }
    const std::string bytes = vek::hexDecode(text);
    std::string digits;
    bool plain = true;
    for (const char character : text) {
        if (character != ' ' && character != '\t' && character != '\n' && character != ':') {
            const auto byte = static_cast<unsigned char>(character);
            plain = plain && std::isxdigit(byte) != 0;
            digits += static_cast<char>(std::tolower(byte));
        }
    }
    require(bytes.empty() || bytes.size() * 2 == digits.size(), "two digits make a byte");
    if (plain && digits.size() % 2 == 0) {
        require(vek::hexEncode(bytes.data(), bytes.size(), 0, false) == digits,
                "digits are decoded as they stand");
    }
    return 0;
}
