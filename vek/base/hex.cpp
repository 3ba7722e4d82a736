#include "vek/base/hex.h"

#include <cstdlib>

#include "vek/base/text.h"

namespace vek {

std::string hexEncode(const void* data, std::size_t length, char separator, bool upper) {
    if (length == 0) {
        return {};
    }
    if (data == nullptr) {
        return "<null>";
    }
    const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::string result;
    result.reserve(length * (separator == 0 ? 2 : 3));
    for (std::size_t i = 0; i < length; ++i) {
        result += digits[bytes[i] >> 4];
        result += digits[bytes[i] & 15];
        if (separator != 0) {
            result += separator;
        }
    }
    if (separator != 0) {
        result.pop_back();
    }
    return result;
}

std::string hexDecode(const std::string& text) {
    std::string digits = text;
    toLower(digits);
    replaceAnyOf(digits, ": \t\n", "");
    if (digits.size() % 2 != 0) {
        return {};
    }
    std::string result;
    result.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const char pair[] = {digits[i], digits[i + 1], '\0'};
        char* end = nullptr;
        const long value = std::strtol(pair, &end, 16);
        if (end != pair + 2) {
            return {};
        }
        result += static_cast<char>(value);
    }
    return result;
}

}  // namespace vek
