#include "tools/log_application/forward/send_buffer.h"

#include <gtest/gtest.h>

namespace {

using namespace log_application;

class SendBufferTest : public testing::Test {
  protected:
    explicit SendBufferTest(std::size_t mostFrames = 3, std::size_t mostBytes = 1000)
        : buffer(
              mostFrames,
              [](std::uint64_t count, std::uint32_t number) {
                  return "(" + std::to_string(number) + " lost " + std::to_string(count) + ")";
              },
              mostBytes) {}

    // Adds "(1 a)" for the text "a" of the first frame.
    void add(const std::string& text) {
        buffer.add([&text](std::uint32_t number) {
            return "(" + std::to_string(number) + " " + text + ")";
        });
    }

    std::string all() { return buffer.next(10'000); }

    // Writes all, at this time.
    void writeAll(std::int64_t now) { buffer.written(all().size(), now); }

    SendBuffer buffer;
};

TEST_F(SendBufferTest, FramesComeInOrderWithTheirNumbers) {
    EXPECT_FALSE(buffer.hasWork());
    EXPECT_EQ(all(), "");
    add("a");
    add("b");
    EXPECT_TRUE(buffer.hasWork());
    EXPECT_EQ(buffer.waiting(), 2u);
    EXPECT_EQ(all(), "(1 a)(2 b)");
}

TEST_F(SendBufferTest, PartsOfFramesAreWritten) {
    add("a");
    add("b");
    EXPECT_EQ(buffer.next(7), "(1 a)(2");
    buffer.written(7, 0);
    EXPECT_EQ(buffer.waiting(), 1u);
    EXPECT_EQ(buffer.next(2), " b");
    buffer.written(2, 0);
    EXPECT_EQ(all(), ")");
    buffer.written(1, 0);
    EXPECT_EQ(buffer.waiting(), 0u);
    EXPECT_EQ(all(), "");
}

TEST_F(SendBufferTest, AFrameWrittenInPartIsWrittenAgainWhole) {
    add("a");
    add("b");
    buffer.written(7, 0);
    buffer.rewind(60'000, 5000);
    EXPECT_EQ(all(), "(2 b)");
}

TEST_F(SendBufferTest, FramesWrittenALittleAgoAreWrittenAgain) {
    add("a");
    writeAll(1000);
    add("b");
    writeAll(2000);
    add("c");
    buffer.rewind(6500, 5000);
    EXPECT_EQ(all(), "(2 b)(3 c)");
    EXPECT_EQ(buffer.waiting(), 2u);
}

TEST_F(SendBufferTest, WhatWasWrittenBeforeTheCollectorStoppedReadingIsDoubtfulForLonger) {
    add("a");
    writeAll(1000);
    buffer.holdUp(100'000);
    buffer.settle(100'001);
    buffer.rewind(104'999, 5000);
    EXPECT_EQ(all(), "(1 a)");
    writeAll(105'000);
    buffer.rewind(110'000, 5000);
    EXPECT_EQ(all(), "");
}

TEST_F(SendBufferTest, WrittenFramesAreReleasedAfterAMinute) {
    add("a");
    writeAll(0);
    add("b");
    writeAll(1);
    buffer.settle(SendBuffer::keptMs);
    buffer.rewind(SendBuffer::keptMs, 2 * SendBuffer::keptMs);
    EXPECT_EQ(all(), "(2 b)");
}

TEST_F(SendBufferTest, WrittenFramesMakeRoomForNewOnes) {
    for (const char* const text : {"a", "b", "c"}) {
        add(text);
    }
    buffer.written(10, 0);
    add("d");
    add("e");
    EXPECT_EQ(buffer.unreported(), 0u);
    add("f");
    EXPECT_EQ(buffer.unreported(), 1u);
    buffer.rewind(0, 5000);
    EXPECT_EQ(all(), "(3 c)(4 d)(5 e)");
}

TEST_F(SendBufferTest, ALossIsReportedBetweenWhatCameBeforeAndBehindIt) {
    for (const char* const text : {"a", "b", "c", "lost", "lost"}) {
        add(text);
    }
    EXPECT_EQ(all(), "(1 a)(2 b)(3 c)");
    EXPECT_TRUE(buffer.hasWork());
    buffer.written(5, 0);
    add("d");
    EXPECT_EQ(all(), "(2 b)(3 c)(6 lost 2)(7 d)");
    EXPECT_EQ(buffer.unreported(), 0u);
}

TEST_F(SendBufferTest, ALossThatNothingFollowsIsReportedAtTheEnd) {
    for (const char* const text : {"a", "b", "c", "lost"}) {
        add(text);
    }
    writeAll(0);
    EXPECT_TRUE(buffer.hasWork());
    EXPECT_EQ(all(), "(5 lost 1)");
    writeAll(0);
    EXPECT_FALSE(buffer.hasWork());
}

TEST_F(SendBufferTest, LossesElsewhereCountToo) {
    buffer.addLost(7);
    EXPECT_TRUE(buffer.hasWork());
    add("a");
    EXPECT_EQ(all(), "(8 lost 7)(9 a)");
}

TEST_F(SendBufferTest, ReportsOfLossesTakeNoRoom) {
    for (int i = 0; i < 5; ++i) {
        buffer.addLost(1);
        add("a");
    }
    // Three messages had room.
    EXPECT_EQ(buffer.waiting(), 6u);
    EXPECT_EQ(buffer.unreported(), 4u);
}

TEST_F(SendBufferTest, AReportIsWrittenAgainToo) {
    buffer.addLost(1);
    writeAll(0);
    buffer.rewind(1, 5000);
    EXPECT_EQ(all(), "(2 lost 1)");
}

class SmallSendBuffer : public SendBufferTest {
  protected:
    SmallSendBuffer() : SendBufferTest(100, 12) {}
};

TEST_F(SmallSendBuffer, CountsBytesToo) {
    for (const char* const text : {"a", "b", "c", "d"}) {
        add(text);
    }
    // The third frame exceeds the limit, the fourth has no room.
    EXPECT_EQ(all(), "(1 a)(2 b)(3 c)");
    EXPECT_EQ(buffer.unreported(), 1u);
    writeAll(0);
    add("e");
    EXPECT_EQ(all(), "(5 lost 1)(6 e)");
}

class OneFrameBuffer : public SendBufferTest {
  protected:
    OneFrameBuffer() : SendBufferTest(1) {}
};

TEST_F(OneFrameBuffer, LosesNothingWhileItIsEmptied) {
    for (int i = 0; i < 10; ++i) {
        add("a");
        writeAll(i);
    }
    EXPECT_EQ(buffer.unreported(), 0u);
}

TEST(SendBuffer, NumbersBeginAgainBehindTheHighest) {
    EXPECT_EQ(SendBuffer::numberBehind(0), 1u);
    EXPECT_EQ(SendBuffer::numberBehind(2'147'483'646), 2'147'483'647u);
    EXPECT_EQ(SendBuffer::numberBehind(2'147'483'647), 1u);
    EXPECT_EQ(SendBuffer::numberBehind(2'147'483'640, 10), 3u);
    EXPECT_EQ(SendBuffer::numberBehind(5, 0), 5u);
    EXPECT_EQ(SendBuffer::numberBehind(0, 2'147'483'647), 2'147'483'647u);
    EXPECT_EQ(SendBuffer::numberBehind(0, 3ull * 2'147'483'647 + 2), 2u);
    EXPECT_EQ(SendBuffer::numberBehind(2'147'483'647, 0xFFFF'FFFF'FFFF'FFFF), 3u);
}

}  // namespace
