// Tests of tools/log_application/web/line_store.cpp.
#include "tools/log_application/web/line_store.h"

#include <thread>

#include <gtest/gtest.h>

namespace {

using log_application::Arrival;
using log_application::LineStore;
using log_application::MergedItem;

MergedItem item(const std::string& text) {
    log_application::LogLine line;
    line.text = text;
    return {{Arrival::message, 1, ""}, line};
}

std::vector<MergedItem> items(int first, int count) {
    std::vector<MergedItem> made;
    for (int i = first; i < first + count; ++i) {
        made.push_back(item(std::to_string(i)));
    }
    return made;
}

LineStore::Taken takeNow(LineStore& store, std::uint64_t from, std::size_t most = 1000) {
    return store.take(from, most, vek::time::MonotonicClock(true));
}

std::string textOf(const LineStore::Item& kept) {
    return *kept->line->text;
}

TEST(LineStoreTest, ReadersTakeTheSameLinesByTheirNumbers) {
    LineStore store(10);
    store.add(items(0, 3));
    EXPECT_EQ(store.end(), 3U);
    for (int reader = 0; reader < 2; ++reader) {
        const auto taken = takeNow(store, 1);
        ASSERT_EQ(taken.items.size(), 2U);
        EXPECT_EQ(taken.first, 1U);
        EXPECT_EQ(taken.missed, 0U);
        EXPECT_EQ(textOf(taken.items[0]), "1");
        EXPECT_EQ(textOf(taken.items[1]), "2");
    }
}

TEST(LineStoreTest, TakesNoMoreThanAsked) {
    LineStore store(10);
    store.add(items(0, 5));
    const auto taken = takeNow(store, 0, 2);
    ASSERT_EQ(taken.items.size(), 2U);
    EXPECT_EQ(textOf(taken.items[1]), "1");
}

TEST(LineStoreTest, ASlowReaderIsToldWhatItHasMissed) {
    LineStore store(10);
    store.add(items(0, 25));
    const auto taken = takeNow(store, 3);
    EXPECT_EQ(taken.missed, 12U);
    EXPECT_EQ(taken.first, 15U);
    ASSERT_EQ(taken.items.size(), 10U);
    EXPECT_EQ(textOf(taken.items[0]), "15");
}

TEST(LineStoreTest, TextsHaveALimitTogether) {
    LineStore store(1000, 100'000);
    for (int i = 0; i < 50; ++i) {
        std::vector<MergedItem> one;
        one.push_back(item(std::string(10'000, 'x')));
        store.add(std::move(one));
    }
    const auto taken = takeNow(store, 0);
    EXPECT_LE(taken.items.size(), 10U);
    EXPECT_GE(taken.items.size(), 5U);
    EXPECT_EQ(taken.missed + taken.items.size(), 50U);
}

TEST(LineStoreTest, ALineBeyondTheLimitEmptiesTheStore) {
    LineStore store(10, 1000);
    std::vector<MergedItem> one;
    one.push_back(item(std::string(5000, 'x')));
    store.add(std::move(one));
    const auto taken = takeNow(store, 0);
    EXPECT_TRUE(taken.items.empty());
    EXPECT_EQ(taken.missed, 1U);
    EXPECT_EQ(store.end(), 1U);
}

TEST(LineStoreTest, AReaderAtTheEndGetsNothingInTime) {
    LineStore store(10);
    store.add(items(0, 2));
    const auto taken = takeNow(store, 2);
    EXPECT_TRUE(taken.items.empty());
    EXPECT_EQ(taken.missed, 0U);
    EXPECT_EQ(taken.first, 2U);
}

TEST(LineStoreTest, WaitsForTheNextLine) {
    LineStore store(10);
    std::thread adder([&store] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        store.add(items(0, 1));
    });
    vek::time::MonotonicClock deadline(true);
    deadline += 20'000;
    EXPECT_EQ(store.take(0, 10, deadline).items.size(), 1U);
    adder.join();
}

}  // namespace
