#include "vek/base/hex_dump.h"

#include <climits>
#include <iomanip>
#include <sstream>
#include <streambuf>
#include <utility>

#include <gtest/gtest.h>

namespace {

using vek::HexDump;

std::string printed(const HexDump& dump) {
    std::ostringstream stream;
    stream << dump;
    return stream.str();
}

TEST(HexDump, WritesTwoDigitsForEachByte) {
    const unsigned char bytes[] = {0x00, 0x0A, 0x7F, 0x80, 0xFF};
    EXPECT_EQ(printed({bytes, 5, 0, " "}), "00 0a 7f 80 ff");
    EXPECT_EQ(printed({bytes, 5, 0, ""}), "000a7f80ff");
    EXPECT_EQ(printed({bytes, 1, 0, " "}), "00");
}

TEST(HexDump, ANewlineTakesTheSeparatorsPlaceBetweenLines) {
    EXPECT_EQ(printed({"abcde", 5, 2, ", "}), "61, 62\n63, 64\n65");
    EXPECT_EQ(printed({"abcd", 4, 2, ", "}), "61, 62\n63, 64");
    EXPECT_EQ(printed({"ab", 2, 1, ", "}), "61\n62");
    EXPECT_EQ(printed({"ab", 2, INT_MAX, ", "}), "61, 62");
}

TEST(HexDump, WithoutALineLengthIsOneLine) {
    EXPECT_EQ(printed({"abc", 3, 0, ":"}), "61:62:63");
    EXPECT_EQ(printed({"abc", 3, -1, ":"}), "61:62:63");
    EXPECT_EQ(printed({"abc", 3, INT_MIN, ":"}), "61:62:63");
}

TEST(HexDump, NullIsNamedWhateverTheLength) {
    EXPECT_EQ(printed({nullptr, 5, 0, " "}), "nullptr");
    EXPECT_EQ(printed({nullptr, 0, 0, " "}), "nullptr");
    EXPECT_EQ(printed({}), "nullptr");
}

TEST(HexDump, WithoutBytesWritesNothing) {
    EXPECT_EQ(printed({"abc", 0, 4, " "}), "");
    EXPECT_EQ(printed({"abc", -1, 4, " "}), "");
    EXPECT_EQ(printed({"abc", INT_MIN, 4, " "}), "");
}

TEST(HexDump, RestoresFillAndFlags) {
    for (const HexDump& dump :
         {HexDump{"ab", 2, 0, " "}, HexDump{nullptr, 2, 0, " "}, HexDump{"", 0, 0, ""}}) {
        std::ostringstream stream;
        stream << std::left << std::oct << std::showpos << std::setfill('*');
        const auto flags = stream.flags();
        stream << dump;
        EXPECT_EQ(stream.flags(), flags);
        EXPECT_EQ(stream.fill(), '*');
    }
}

// Takes one character and then no more.
class FullBuffer : public std::streambuf {
  protected:
    int_type overflow(int_type ch) override {
        return std::exchange(isFull, true) ? traits_type::eof() : ch;
    }

  private:
    bool isFull = false;
};

TEST(HexDump, RestoresFillAndFlagsWhenTheStreamThrows) {
    FullBuffer buffer;
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);
    stream << std::setfill('*');
    const auto flags = stream.flags();
    EXPECT_THROW(stream << (HexDump{"ab", 2, 0, " "}), std::ios::failure);
    EXPECT_EQ(stream.flags(), flags);
    EXPECT_EQ(stream.fill(), '*');
}

TEST(HexDump, IsRightAlignedInALeftAlignedStream) {
    std::ostringstream stream;
    stream << std::left << std::setfill('*') << (HexDump{"\x01\x02", 2, 0, " "});
    EXPECT_EQ(stream.str(), "01 02");
}

TEST(HexDump, AnEarlierWidthDoesNotWidenBytes) {
    std::ostringstream stream;
    stream << std::setw(9) << (HexDump{"\x01\x02", 2, 0, " "}) << 'x';
    EXPECT_EQ(stream.str(), "01 02x");
}

TEST(HexDump, AnEarlierWidthHoldsForNull) {
    std::ostringstream stream;
    stream << std::setw(9) << HexDump{} << 'x';
    EXPECT_EQ(stream.str(), "00nullptrx");
}

TEST(HexDump, AnEarlierWidthOutlastsAnEmptyDump) {
    std::ostringstream stream;
    stream << std::setw(3) << (HexDump{"", 0, 0, " "}) << 'x';
    EXPECT_EQ(stream.str(), "  x");
}

TEST(HexDump, KeepsTheStreamsCase) {
    std::ostringstream stream;
    stream << std::uppercase << (HexDump{"\xAB", 1, 0, " "});
    EXPECT_EQ(stream.str(), "AB");
}

}  // namespace
