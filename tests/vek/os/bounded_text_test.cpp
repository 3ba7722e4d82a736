#include "vek/os/bounded_text.h"

#include <array>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace {

using vek::os::boundedAppend;
using vek::os::boundedCopy;
using vek::os::boundedPrint;

TEST(BoundedPrint, TerminatesAndTellsWhatItStored) {
    std::array<char, 6> buffer;
    buffer.fill('x');
    EXPECT_EQ(boundedPrint(buffer.data(), 5, "%d", 123), 3);
    EXPECT_STREQ(buffer.data(), "123");
    EXPECT_EQ(boundedPrint(buffer.data(), 5, "%d", 1234), 4);
    EXPECT_STREQ(buffer.data(), "1234");
    EXPECT_EQ(boundedPrint(buffer.data(), 5, "%d", 1234567), 4);
    EXPECT_STREQ(buffer.data(), "1234");
    EXPECT_EQ(boundedPrint(buffer.data(), 1, "abc"), 0);
    EXPECT_STREQ(buffer.data(), "");
    EXPECT_EQ(buffer[5], 'x');
}

TEST(BoundedPrint, SizeOfZeroTouchesNothing) {
    char untouched = 'x';
    EXPECT_EQ(boundedPrint(&untouched, 0, "abc"), 0);
    EXPECT_EQ(untouched, 'x');
    EXPECT_EQ(boundedPrint(nullptr, 0, "abc"), 0);
}

TEST(BoundedPrint, NullArgumentsStoreNothingButATerminator) {
    EXPECT_EQ(boundedPrint(nullptr, 10, "abc"), 0);
    std::array<char, 2> buffer = {'x', 'x'};
    const char* none = nullptr;
    EXPECT_EQ(boundedPrint(buffer.data(), 2, none), 0);
    EXPECT_STREQ(buffer.data(), "");
}

TEST(BoundedPrint, SizeBeyondWhatAnIntHoldsIsNoError) {
    std::array<char, 10> buffer;
    buffer.fill('x');
    EXPECT_EQ(boundedPrint(buffer.data(), SIZE_MAX, "%s", "abc"), 3);
    EXPECT_STREQ(buffer.data(), "abc");
}

TEST(BoundedPrint, VeryLongTextIsCut) {
    std::array<char, 20> buffer;
    const std::string text(1000000, 'y');
    EXPECT_EQ(boundedPrint(buffer.data(), buffer.size(), "%s", text.c_str()), 19);
    EXPECT_EQ(buffer.data(), std::string(19, 'y'));
}

TEST(BoundedCopy, CutsAndTerminates) {
    std::array<char, 5> buffer;
    buffer.fill('x');
    EXPECT_EQ(boundedCopy(buffer.data(), 4, "ab"), buffer.data());
    EXPECT_STREQ(buffer.data(), "ab");
    EXPECT_EQ(boundedCopy(buffer.data(), 4, "abc"), buffer.data());
    EXPECT_STREQ(buffer.data(), "abc");
    EXPECT_EQ(boundedCopy(buffer.data(), 4, "defghi"), buffer.data());
    EXPECT_STREQ(buffer.data(), "def");
    boundedCopy(buffer.data(), 1, "a");
    EXPECT_STREQ(buffer.data(), "");
    EXPECT_EQ(buffer[4], 'x');
}

TEST(BoundedCopy, NullArgumentsGiveNull) {
    std::array<char, 4> buffer = {'a', 'b', '\0', 'x'};
    EXPECT_EQ(boundedCopy(nullptr, 4, "a"), nullptr);
    EXPECT_EQ(boundedCopy(buffer.data(), 4, nullptr), nullptr);
    EXPECT_EQ(boundedCopy(buffer.data(), 0, "c"), nullptr);
    EXPECT_STREQ(buffer.data(), "ab");
}

TEST(BoundedAppend, AppendsAndTerminates) {
    std::array<char, 7> buffer = {'\0', 'x', 'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(boundedAppend(buffer.data(), 6, "ab"), buffer.data());
    EXPECT_STREQ(buffer.data(), "ab");
    EXPECT_EQ(boundedAppend(buffer.data(), 6, ""), buffer.data());
    EXPECT_STREQ(buffer.data(), "ab");
    EXPECT_EQ(boundedAppend(buffer.data(), 6, "cde"), buffer.data());
    EXPECT_STREQ(buffer.data(), "abcde");
    EXPECT_EQ(boundedAppend(buffer.data(), 6, "f"), buffer.data());
    EXPECT_STREQ(buffer.data(), "abcde");
    EXPECT_EQ(buffer[6], 'x');
}

TEST(BoundedAppend, CutsWhatDoesNotFit) {
    std::array<char, 5> buffer = {'a', '\0', 'x', 'x', 'x'};
    EXPECT_EQ(boundedAppend(buffer.data(), 4, std::string(100000, 'b').c_str()), buffer.data());
    EXPECT_STREQ(buffer.data(), "abb");
    EXPECT_EQ(buffer[4], 'x');
}

TEST(BoundedAppend, BufferWithoutTerminatorIsFull) {
    std::array<char, 4> buffer = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(boundedAppend(buffer.data(), 3, "z"), buffer.data());
    EXPECT_STREQ(buffer.data(), "ab");
    EXPECT_EQ(buffer[3], 'd');
}

TEST(BoundedAppend, NullArgumentsGiveNull) {
    std::array<char, 4> buffer = {'a', '\0', 'x', 'x'};
    EXPECT_EQ(boundedAppend(nullptr, 4, "a"), nullptr);
    EXPECT_EQ(boundedAppend(buffer.data(), 4, nullptr), nullptr);
    EXPECT_EQ(boundedAppend(buffer.data(), 0, "b"), nullptr);
    EXPECT_STREQ(buffer.data(), "a");
}

}  // namespace
