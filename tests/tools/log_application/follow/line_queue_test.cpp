#include "tools/log_application/follow/line_queue.h"

#include <thread>

#include <gtest/gtest.h>

#include "vek/time/clock_source.h"

namespace {

using namespace log_application;

std::vector<Arrival> takeAll(LineQueue& queue, std::int64_t waitMs = 0) {
    vek::time::MonotonicClock deadline(true);
    deadline += waitMs;
    return queue.take(deadline);
}

TEST(LineQueue, GivesEverythingInItsOrder) {
    LineQueue queue(10);
    queue.addMessage(0, "a");
    queue.addNotice(1, "n");
    queue.addMessage(1, "b");
    queue.addEnd(0);
    const std::vector<Arrival> arrivals = takeAll(queue);
    ASSERT_EQ(arrivals.size(), 4u);
    EXPECT_EQ(arrivals[0].text, "a");
    EXPECT_EQ(arrivals[1].kind, Arrival::notice);
    EXPECT_EQ(arrivals[2].source, 1u);
    EXPECT_EQ(arrivals[3].kind, Arrival::ended);
    EXPECT_TRUE(takeAll(queue).empty());
}

TEST(LineQueue, CountsWhatFindsNoRoomAndTellsWhereItWas) {
    LineQueue queue(2);
    for (int i = 0; i < 5; ++i) {
        queue.addMessage(0, std::to_string(i));
    }
    queue.addMessage(1, "x");
    queue.addEnd(0);
    const std::vector<Arrival> arrivals = takeAll(queue);
    ASSERT_EQ(arrivals.size(), 5u);
    EXPECT_EQ(arrivals[0].text, "0");
    EXPECT_EQ(arrivals[1].text, "1");
    EXPECT_EQ(arrivals[2].kind, Arrival::dropped);
    EXPECT_EQ(arrivals[2].count, 3u);
    EXPECT_EQ(arrivals[3].kind, Arrival::ended);
    EXPECT_EQ(arrivals[4].kind, Arrival::dropped);
    EXPECT_EQ(arrivals[4].source, 1u);
    queue.addMessage(0, "5");
    ASSERT_EQ(takeAll(queue).size(), 1u);
}

TEST(LineQueue, IsBoundedInBytesToo) {
    LineQueue queue(1000);
    const std::string large(LineQueue::mostBytes / 8 + 1, 'x');
    for (int i = 0; i < 8; ++i) {
        queue.addMessage(0, large);
    }
    const std::vector<Arrival> arrivals = takeAll(queue);
    ASSERT_EQ(arrivals.size(), 8u);
    EXPECT_EQ(arrivals[7].kind, Arrival::dropped);
    EXPECT_EQ(arrivals[7].count, 1u);
}

TEST(LineQueue, WaitsUntilThereIsSomething) {
    LineQueue queue(10);
    std::thread adder([&queue] { queue.addMessage(0, "a"); });
    EXPECT_EQ(takeAll(queue, 20'000).size(), 1u);
    adder.join();
}

TEST(LineQueue, GivesNothingAtTheDeadline) {
    LineQueue queue(10);
    EXPECT_TRUE(takeAll(queue, 10).empty());
}

}  // namespace
