#include "vek/base/hex.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "vek/base/text.h"

namespace {

using vek::hexDecode;
using vek::hexEncode;

const std::string everyByte = [] {
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes += static_cast<char>(i);
    }
    return bytes;
}();

TEST(HexEncode, WritesTwoDigitsForEachByte) {
    const unsigned char bytes[] = {0x0A, 0xFF};
    EXPECT_EQ(hexEncode(bytes, 2, ':', true), "0A:FF");
    EXPECT_EQ(hexEncode(bytes, 2, ':', false), "0a:ff");
    EXPECT_EQ(hexEncode(bytes, 2, 0, true), "0AFF");
    EXPECT_EQ(hexEncode(bytes, 2, 0, false), "0aff");
}

TEST(HexEncode, OneByteHasNoSeparator) {
    EXPECT_EQ(hexEncode("\0", 1, '-', false), "00");
}

TEST(HexEncode, AnyCharacterSeparates) {
    EXPECT_EQ(hexEncode("ab", 2, '%', false), "61%62");
    EXPECT_EQ(hexEncode("ab", 2, '\xFF', false),
              "61\xFF"
              "62");
}

TEST(HexEncode, WithoutBytesIsEmpty) {
    EXPECT_EQ(hexEncode("", 0, ':', true), "");
    EXPECT_EQ(hexEncode(nullptr, 0, ':', true), "");
}

TEST(HexEncode, NullWithALengthIsNamed) {
    EXPECT_EQ(hexEncode(nullptr, 1, ':', true), "<null>");
    EXPECT_EQ(hexEncode(nullptr, static_cast<std::size_t>(-1), 0, false), "<null>");
}

TEST(HexDecode, GivesTheBytesOfEitherCaseAndAnySpacing) {
    const std::string bytes = "\x0A\xFF";
    EXPECT_EQ(hexDecode("0a:ff"), bytes);
    EXPECT_EQ(hexDecode("0A FF"), bytes);
    EXPECT_EQ(hexDecode("0aff"), bytes);
    EXPECT_EQ(hexDecode("0\ta\n:f: F\n"), bytes);
}

TEST(HexDecode, OddCountOfDigitsIsInvalid) {
    EXPECT_EQ(hexDecode("0af"), "");
    EXPECT_EQ(hexDecode("0"), "");
}

TEST(HexDecode, OtherCharactersMakeTheWholeInvalid) {
    EXPECT_EQ(hexDecode("0g"), "");
    EXPECT_EQ(hexDecode("0a0g"), "");
    EXPECT_EQ(hexDecode("0g0a"), "");
    EXPECT_EQ(hexDecode("0x"), "");
    EXPECT_EQ(hexDecode("0x0a"), "");
    EXPECT_EQ(hexDecode("a "), "");
    EXPECT_EQ(hexDecode("a\r"), "");
    EXPECT_EQ(hexDecode("++"), "");
    EXPECT_EQ(hexDecode("\r\r"), "");
    EXPECT_EQ(hexDecode("\xE4\xFF"), "");
}

TEST(HexDecode, ZeroBytesAreInvalid) {
    EXPECT_EQ(hexDecode(std::string("\0a", 2)), "");
    EXPECT_EQ(hexDecode(std::string("a\0", 2)), "");
    EXPECT_EQ(hexDecode(std::string("\0\0", 2)), "");
}

TEST(HexDecode, ReadsAPairAsANumberWithItsSign) {
    EXPECT_EQ(hexDecode("+a"), "\x0A");
    EXPECT_EQ(hexDecode("-1"), "\xFF");
    EXPECT_EQ(hexDecode("\ra"), "\x0A");
}

TEST(HexDecode, EmptyTextGivesNoBytes) {
    EXPECT_EQ(hexDecode(""), "");
    EXPECT_EQ(hexDecode(" :\t\n"), "");
}

TEST(HexDecode, GivesBackWhatHexEncodeWrote) {
    EXPECT_EQ(hexDecode(hexEncode(everyByte.data(), everyByte.size(), 0, true)), everyByte);
    EXPECT_EQ(hexDecode(hexEncode(everyByte.data(), everyByte.size(), ':', false)), everyByte);
    const std::string megabyte(1 << 20, '\xA5');
    EXPECT_EQ(hexDecode(hexEncode(megabyte.data(), megabyte.size(), ' ', false)), megabyte);
}

// What hexDecode promises, in its simplest form.
std::string decodeByStrtol(std::string digits) {
    vek::toLower(digits);
    vek::replaceAnyOf(digits, ": \t\n", "");
    if (digits.size() % 2 != 0) {
        return {};
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const std::string pair = digits.substr(i, 2);
        char* end = nullptr;
        const long value = std::strtol(pair.c_str(), &end, 16);
        if (end != pair.c_str() + 2) {
            return {};
        }
        bytes += static_cast<char>(value);
    }
    return bytes;
}

TEST(HexDecode, GivesForEachPairOfCharactersWhatStrtolGives) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string pair = {static_cast<char>(first), static_cast<char>(second)};
            ASSERT_EQ(hexDecode(pair), decodeByStrtol(pair)) << first << ' ' << second;
            ASSERT_EQ(hexDecode("4" + pair + "1"), decodeByStrtol("4" + pair + "1"))
                << first << ' ' << second;
        }
    }
}

}  // namespace
