#include "tools/log_application/follow/time_merger.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace log_application;

MergedItem item(std::size_t source, std::optional<std::int64_t> when, const std::string& text) {
    MergedItem made = {{Arrival::message, source, text, 0}, LogLine()};
    made.line->when = when;
    return made;
}

MergedItem notice(std::size_t source, const std::string& text) {
    return {{Arrival::notice, source, text, 0}, std::nullopt};
}

std::string texts(const std::vector<MergedItem>& items) {
    std::string all;
    for (const MergedItem& each : items) {
        all += each.arrival.text;
    }
    return all;
}

TEST(TimeMerger, PutsTheLinesOfSeveralIntoTheOrderOfTheirTimes) {
    TimeMerger merger(100);
    merger.add(item(0, 10, "a"), 0);
    merger.add(item(0, 30, "c"), 0);
    merger.add(item(1, 20, "b"), 5);
    merger.add(item(1, 40, "d"), 5);
    EXPECT_EQ(texts(merger.takeReady(99)), "");
    EXPECT_EQ(texts(merger.takeReady(100)), "abc");
    EXPECT_EQ(texts(merger.takeReady(105)), "d");
}

TEST(TimeMerger, KeepsTheOrderOfASource) {
    TimeMerger merger(100);
    merger.add(item(0, 30, "a"), 0);
    merger.add(item(0, 10, "b"), 0);
    merger.add(item(1, 20, "c"), 0);
    EXPECT_EQ(texts(merger.takeAll()), "cab");
}

TEST(TimeMerger, NoticesStayBehindTheLinesOfTheirSource) {
    TimeMerger merger(100);
    merger.add(item(0, 50, "a"), 0);
    merger.add(notice(0, "!"), 0);
    merger.add(item(1, 40, "b"), 0);
    EXPECT_EQ(texts(merger.takeAll()), "ba!");
}

TEST(TimeMerger, WithoutAWindowGivesAllAtOnceInTheOrderOfArrival) {
    TimeMerger merger(0);
    merger.add(item(0, 30, "a"), 0);
    merger.add(item(0, 10, "b"), 0);
    merger.add(item(0, std::nullopt, "c"), 0);
    EXPECT_EQ(texts(merger.takeReady(0)), "abc");
}

TEST(TimeMerger, AWrongClockDoesNotHoldOthersUp) {
    TimeMerger merger(100);
    merger.add(item(0, INT64_MAX, "future"), 0);
    merger.add(item(1, 1, "a"), 50);
    EXPECT_EQ(texts(merger.takeReady(100)), "afuture");
    merger.add(item(1, 2, "b"), 110);
    EXPECT_EQ(texts(merger.takeReady(150)), "");
    EXPECT_EQ(texts(merger.takeReady(210)), "b");
}

TEST(TimeMerger, TellsWhenToAskAgain) {
    TimeMerger merger(100);
    EXPECT_FALSE(merger.nextReady());
    merger.add(item(0, 1, "a"), 7);
    merger.add(item(0, 2, "b"), 9);
    EXPECT_EQ(merger.nextReady(), 107);
    merger.takeReady(107);
    EXPECT_EQ(merger.nextReady(), 109);
}

}  // namespace
