// When a rotation is due.
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"
#include "tests/vek/log/sinks/file_sink_fixture.h"
#include "vek/base/windows.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/time/clock.h"

namespace {

using vek::log::FileSink;
using vek::log::FileSinkConfig;
using vek::test::Names;
using vek::time::MonotonicClock;

class FileSinkDueTest : public vek::test::FileSinkTest {
  protected:
    // Adds to the file so that it is `size` bytes long once "." has been stored, behind the
    // sink's back.
    void growFor(std::size_t size) const {
        const std::size_t now = readFile("x.log").size();
        std::ofstream(path("x.log"), std::ios::binary | std::ios::app)
            << std::string(size - now - 3, 'x');
    }
};

TEST_F(FileSinkDueTest, NeverWithRotateFalse) {
    FileSinkConfig config = settings();
    config.rotate = false;
    config.rotate_interval = 1;
    FileSink sink(config);
    Sleep(2100);
    for (int i = 0; i < 300; ++i) {
        store(sink, std::string(2000, 'x'));
        ASSERT_FALSE(sink.needsRotation());
    }
    EXPECT_EQ(names(), (Names{"x.log"}));
}

TEST_F(FileSinkDueTest, NeverForASinkThatIsNotEnabled) {
    FileSinkConfig config = settings();
    config.enabled = false;
    FileSink sink(config);
    EXPECT_FALSE(sink.needsRotation());
    storeMany(sink, 200);
    EXPECT_FALSE(sink.needsRotation());
}

TEST_F(FileSinkDueTest, AtTheHundredthMessageIfTheFileIsOneByteTooLarge) {
    FileSink sink(settings());
    storeMany(sink, 99);
    growFor(1025);
    store(sink, ".");
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
    EXPECT_EQ(readFile("x.log"), "");
    EXPECT_EQ(readFile("x.log.old.1").size(), 1025u);
}

TEST_F(FileSinkDueTest, NotIfTheFileIsExactlyAsLargeAsAllowed) {
    FileSink sink(settings());
    storeMany(sink, 99);
    growFor(1024);
    store(sink, ".");
    EXPECT_EQ(names(), (Names{"x.log"}));
    EXPECT_EQ(readFile("x.log").size(), 1024u);
    EXPECT_FALSE(sink.needsRotation());
}

TEST_F(FileSinkDueTest, ByDefaultBeyond5MiB) {
    FileSinkConfig config = settings();
    config.rotate_size = 0;
    FileSink sink(config);
    storeMany(sink, 99);
    growFor(5242880);
    store(sink, ".");
    EXPECT_EQ(names(), (Names{"x.log"}));
    storeMany(sink, 99);
    EXPECT_EQ(names(), (Names{"x.log"}));
    store(sink, ".");
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
}

TEST_F(FileSinkDueTest, WhatTheFileHeldBeforeCounts) {
    writeFile("x.log", std::string(1024, 'x'));
    FileSink sink(settings());
    EXPECT_FALSE(sink.needsRotation());
    storeMany(sink, 100);
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
    EXPECT_EQ(readFile("x.log.old.1"), std::string(1024, 'x') + lines(100));
}

TEST_F(FileSinkDueTest, SizeThatFitsNoFileIsNeverReached) {
    for (const std::uint64_t size : {std::uint64_t{1} << 54, std::uint64_t{1} << 60,
                                     std::numeric_limits<std::uint64_t>::max()}) {
        FileSinkConfig config = settings();
        config.rotate_size = size;
        FileSink sink(config);
        storeMany(sink, 100);
        EXPECT_FALSE(sink.needsRotation()) << size;
    }
    EXPECT_EQ(names(), (Names{"x.log"}));
}

TEST_F(FileSinkDueTest, SizeCountsAtEachHundredthMessageSinceConstruction) {
    FileSink sink(settings());
    const std::string large(2000, 'x');
    for (int i = 1; i <= 99; ++i) {
        store(sink, large);
    }
    EXPECT_EQ(names(), (Names{"x.log"}));
    store(sink, large);
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
    // A rotation in between doesn't begin a new hundred.
    for (int i = 101; i <= 150; ++i) {
        store(sink, large);
    }
    sink.rotate();
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.2"}));
    for (int i = 151; i <= 199; ++i) {
        store(sink, large);
    }
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.2"}));
    store(sink, large);
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1", "x.log.old.2", "x.log.old.3"}));
    EXPECT_EQ(readFile("x.log.old.1").size(), 50u * 2002);
}

TEST_F(FileSinkDueTest, SizeCountsBeforeTheFirstMessageToo) {
    writeFile("x.log", std::string(1025, 'x'));
    FileSink sink(settings());
    EXPECT_TRUE(sink.needsRotation()) << "0 is a multiple of 100";
    EXPECT_EQ(names(), (Names{"x.log"})) << "asking doesn't rotate";
}

// Waits for real: the clock is the system's.
TEST_F(FileSinkDueTest, SizeCountsAtEveryMessageOnceTheSinkIs11SecondsOldForGood) {
    constexpr std::int64_t young = 11000;
    const std::string large(2000, 'x');
    const MonotonicClock before(true);
    FileSink sink(settings());
    const MonotonicClock made(true);
    int messages = 0;
    do {
        // Fewer than 100, so that these 11 seconds have no hundredth message.
        ASSERT_LT(++messages, 100);
        Sleep(200);
        const MonotonicClock start(true);
        store(sink, large);
        const MonotonicClock end(true);
        if (names().size() == 1) {
            ASSERT_LT(start - made, young);
        } else {
            ASSERT_GE(end - before, young);
        }
    } while (names().size() == 1);
    // The rotation hasn't made the sink young again.
    for (int i = 0; i < 5; ++i) {
        store(sink, "small");
        EXPECT_NE(readFile("x.log"), "");
        store(sink, large);
        EXPECT_EQ(readFile("x.log"), "") << "rotated";
    }
}

TEST_F(FileSinkDueTest, AgeCountsInWholeSecondsSinceConstructionAndSinceEachRotation) {
    FileSinkConfig config = settings();
    config.rotate_interval = 1;
    MonotonicClock before(true);
    FileSink sink(config);
    MonotonicClock made(true);
    for (std::size_t rotations = 0; rotations < 2;) {
        Sleep(20);
        const MonotonicClock start(true);
        store(sink, "x");
        const MonotonicClock end(true);
        if (names().size() == rotations + 1) {
            // Longer than 1 second means 2, as fractions don't count.
            ASSERT_LT(start - made, 2000);
        } else {
            ASSERT_GE(end - before, 2000);
            before = start;
            made = end;
            ++rotations;
        }
    }
    // An explicit rotation stamps the clock as well, and so the file is young.
    Sleep(1500);
    sink.rotate();
    Sleep(600);
    EXPECT_FALSE(sink.needsRotation());
}

TEST_F(FileSinkDueTest, AgeOfAnOlderFileCountsFromTheConstruction) {
    writeFile("x.log", "old\r\n");
    FileSinkConfig config = settings();
    config.rotate_interval = 1;
    Sleep(2100);
    FileSink sink(config);
    store(sink, "x");
    EXPECT_EQ(names(), (Names{"x.log"}));
}

TEST_F(FileSinkDueTest, StreamThatFailsAtTheSizeTestCountsAsTooLargeAndIsOpenedAnew) {
    FileSinkConfig config = settings();
    config.rotate_size = 1000000;
    const auto before = support::openHandles();
    FileSink sink(config);
    HANDLE file = nullptr;
    for (const std::uintptr_t value : support::openHandles()) {
        if (!before.contains(value)) {
            file = reinterpret_cast<HANDLE>(value);
        }
    }
    storeMany(sink, 99);
    ASSERT_NE(CloseHandle(file), 0);
    store(sink, "lost");
    EXPECT_TRUE(sink.isGood());
    store(sink, "next");
    EXPECT_EQ(names(), (Names{"x.log", "x.log.old.1"}));
    EXPECT_EQ(readFile("x.log.old.1"), lines(99));
    EXPECT_EQ(readFile("x.log"), "next\r\n");
}

}  // namespace
