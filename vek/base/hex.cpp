#include "vek/base/hex.h"

#include <cstdlib>

namespace vek {

namespace {

// 16 for what isn't a digit.
unsigned digitValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    // Lower case, if it is a letter.
    const char letter = static_cast<char>(digit | 0x20);
    return letter >= 'a' && letter <= 'f' ? static_cast<unsigned>(letter - 'a') + 10 : 16;
}

// Appends the byte for two characters. Returns false if they are no byte.
bool appendPair(std::string& bytes, char first, char second) {
    const unsigned high = digitValue(first);
    const unsigned low = digitValue(second);
    if (high < 16 && low < 16) {
        bytes += static_cast<char>(high << 4 | low);
        return true;
    }
    // Perhaps a sign or a blank before a digit.
    const char pair[] = {first, second, '\0'};
    char* end = nullptr;
    const long value = std::strtol(pair, &end, 16);
    if (end != pair + 2) {
        return false;
    }
    bytes += static_cast<char>(value);
    return true;
}

}  // namespace

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
    std::string result;
    result.reserve(text.size() / 2);
    bool haveFirst = false;
    char first = '\0';
    for (const char ch : text) {
        if (ch == ':' || ch == ' ' || ch == '\t' || ch == '\n') {
            continue;
        }
        if (!haveFirst) {
            first = ch;
        } else if (!appendPair(result, first, ch)) {
            return {};
        }
        haveFirst = !haveFirst;
    }
    return haveFirst ? std::string() : result;
}

}  // namespace vek
