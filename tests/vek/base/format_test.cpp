#include "vek/base/format.h"

#include <climits>
#include <cstdarg>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using vek::format;

TEST(Format, PrintsPlainConversions) {
    EXPECT_EQ(
        format("%s: %d of %u, %c%5.2f|%-4d|%04X|%lld", "a", -1, 7u, 'x', 2.5, 3, 10, 1LL << 40),
        "a: -1 of 7, x 2.50|3   |000A|1099511627776");
    EXPECT_EQ(format("nothing"), "nothing");
    EXPECT_EQ(format("%s", ""), "");
}

TEST(Format, PrintsNumberedConversions) {
    EXPECT_EQ(format("%1$s-%2$d", "a", 5), "a-5");
    EXPECT_EQ(format("%2$s-%1$d", 5, "a"), "a-5");
    EXPECT_EQ(format("%1$s%1$s", "ab"), "abab");
    EXPECT_EQ(format("%1$-4d|%2$04x|%3$.2s|", 5, 10u, "abc"), "5   |000a|ab|");
    EXPECT_EQ(format("%3$c%2$lld%1$5.2f", 2.5, 1LL << 40, 'x'), "x1099511627776 2.50");
}

TEST(Format, PrintsMoreThanNineNumberedArguments) {
    EXPECT_EQ(
        format("%1$d%2$d%3$d%4$d%5$d%6$d%7$d%8$d%9$d%10$d%11$d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11),
        "1234567891011");
}

TEST(Format, PercentSignsAreDoubled) {
    EXPECT_EQ(format("100%%"), "100%");
    EXPECT_EQ(format("%%%%"), "%%");
    EXPECT_EQ(format("%d%%%d", 1, 2), "1%2");
    EXPECT_EQ(format("%1$d%% %%%2$s", 5, "a"), "5% %a");
    EXPECT_EQ(format("%2$d%% %%%1$s", "a", 5), "5% %a");
}

TEST(Format, DollarSignsInTheTextStay) {
    EXPECT_EQ(format("$%d$ %%1$s", 5), "$5$ %1$s");
    EXPECT_EQ(format("$%2$d$%1$d", 5, 6), "$6$5");
}

// Around the first size, around the size at which errors become final, and far beyond both.
class FormatLength : public testing::TestWithParam<std::size_t> {};

TEST_P(FormatLength, PlainTextIsWhole) {
    const std::string text(GetParam(), 'x');
    EXPECT_EQ(format("%s", text.c_str()), text);
    EXPECT_EQ(format((text + "%%").c_str()), text + "%");
    EXPECT_EQ(format("%*d", static_cast<int>(GetParam()), 5),
              std::string(GetParam() - 1, ' ') + "5");
}

TEST_P(FormatLength, NumberedTextIsWhole) {
    const std::string text(GetParam() - 1, 'x');
    EXPECT_EQ(format("%1$s%2$d", text.c_str(), 5), text + "5");
    EXPECT_EQ(format("%2$s%1$d", 5, text.c_str()), text + "5");
    EXPECT_EQ(format((text + "%1$d").c_str(), 5), text + "5");
}

INSTANTIATE_TEST_SUITE_P(Lengths, FormatLength,
                         testing::Values(1, 126, 127, 128, 129, 130, 255, 256, 257, 258, 32767,
                                         32768, 32769, 32770, 65536, 100000, 1 << 20));

TEST_P(FormatLength, PaddedCharacterIsWhole) {
    const int width = static_cast<int>(GetParam());
    const std::string expected = std::string(GetParam() - 1, ' ') + "y";
    EXPECT_EQ(format(("%" + std::to_string(width) + "c").c_str(), 'y'), expected);
    EXPECT_EQ(format("%*c", width, 'y'), expected);
    EXPECT_EQ(format(("%2$s%1$" + std::to_string(width) + "c").c_str(), 'y', "a"), "a" + expected);
}

// The fast way must print what the numbered form of the runtime prints. A number that comes out of
// order, here that of the empty text in front, keeps a pattern from the fast way.
TEST(Format, PlainAndNumberedFormsAgree) {
    int compared = 0;
    const auto compare = [&](const std::string& conversion, auto value) {
        const std::string plain = "%s%" + conversion;
        const std::string inOrder = "%1$s%2$" + conversion;
        const std::string outOfOrder = "%2$s%1$" + conversion;
        const std::string expected = format(outOfOrder.c_str(), value, "");
        EXPECT_EQ(format(plain.c_str(), "", value), expected) << plain;
        EXPECT_EQ(format(inOrder.c_str(), "", value), expected) << inOrder;
        ++compared;
    };
    for (const std::string flags : {"", "-", "0", "-0", "+", " ", "#", "+0"}) {
        for (const std::string width : {"", "1", "12"}) {
            for (const std::string precision : {"", ".", ".0", ".1", ".7"}) {
                const std::string start = flags + width + precision;
                for (const char* type : {"d", "i", "u", "x", "X", "o"}) {
                    for (const int value : {0, 1, -1, 1234, INT_MAX, INT_MIN}) {
                        compare(start + type, value);
                        compare(start + "l" + type, static_cast<long>(value));
                        compare(start + "ll" + type, value * 0x7FFFFFFFLL);
                    }
                }
                compare(start + "s", "abc");
                compare(start + "s", static_cast<const char*>(nullptr));
                compare(start + "c", 'y');
            }
        }
    }
    EXPECT_GT(compared, 10000);
}

TEST(Format, ErrorGivesTheEmptyString) {
    // A character that the runtime's code page doesn't have.
    EXPECT_EQ(format("text %ls", L"\x4E2D"), "");
    EXPECT_EQ(format("text %1$ls", L"\x4E2D"), "");
    EXPECT_EQ(format("%2$ls %1$s", "text", L"\x4E2D"), "");
    const std::string text(40000, 'x');
    EXPECT_EQ(format("%s%ls", text.c_str(), L"\x4E2D"), "");
}

TEST(Format, NullPatternGivesTheEmptyString) {
    EXPECT_EQ(format(static_cast<const char*>(nullptr)), "");
}

#ifdef _WIN32
TEST(Format, RefusedPatternGivesTheEmptyString) {
    for (const char* pattern :
         {"%1$s %s", "%s %1$s", "%2$s", "%1$s %3$s", "%", "100%", "%q", "%1$"}) {
        EXPECT_EQ(format(pattern, "a", "b", "c"), "") << pattern;
    }
    EXPECT_EQ(format("%d", 5), "5");
}
#endif

TEST(Format, ZeroBytesAndBytesAboveAsciiAreText) {
    EXPECT_EQ(format("a%cb%s", 0, "\xE4\xFF"), std::string("a\0b\xE4\xFF", 5));
    EXPECT_EQ(format("%2$s%1$cb", 0, "\xE4"), std::string("\xE4\0b", 3));
    EXPECT_EQ(format("\xFF%d\x80", 1),
              "\xFF"
              "1\x80");
}

TEST(Format, LongPatternsKeepTheirNumbers) {
    for (const std::size_t length : {240u, 250u, 251u, 252u, 255u, 256u, 300u, 5000u}) {
        const std::string text(length, 'p');
        EXPECT_EQ(format(("%1$d" + text + "%2$d").c_str(), 5, 6), "5" + text + "6");
    }
}

std::string twice(const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    const std::string first = vek::formatv(pattern, arguments);
    const std::string second = vek::formatv(pattern, arguments);
    va_end(arguments);
    return first + "|" + second;
}

TEST(Formatv, LeavesTheArgumentsForFurtherUse) {
    EXPECT_EQ(twice("%s-%d", "a", 5), "a-5|a-5");
    EXPECT_EQ(twice("%2$s-%1$d", 5, "a"), "a-5|a-5");
    const std::string text(500, 'x');
    EXPECT_EQ(twice("%s-%d", text.c_str(), 5), text + "-5|" + text + "-5");
    EXPECT_EQ(twice("%2$s-%1$d", 5, text.c_str()), text + "-5|" + text + "-5");
}

}  // namespace
