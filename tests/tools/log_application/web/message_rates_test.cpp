// Tests of tools/log_application/web/message_rates.cpp.
#include "tools/log_application/web/message_rates.h"

#include <gtest/gtest.h>

namespace {

using log_application::MessageRates;
using Second = MessageRates::Second;

TEST(MessageRatesTest, CountsByLevelAndSecond) {
    MessageRates rates;
    rates.count(100, vek::log::ERR);
    rates.count(100, vek::log::TRACE);
    rates.count(100, vek::log::TRACE);
    rates.count(102, vek::log::INFO);
    const auto seconds = rates.between(100, 102);
    ASSERT_EQ(seconds.size(), 3U);
    EXPECT_EQ(seconds[0], (Second{0, 1, 0, 0, 0, 2}));
    EXPECT_EQ(seconds[1], Second());
    EXPECT_EQ(seconds[2], (Second{0, 0, 0, 1, 0, 0}));
}

TEST(MessageRatesTest, MessagesWithoutALevelAreCountedByThemselves) {
    MessageRates rates;
    rates.count(1, std::nullopt);
    rates.count(1, vek::log::OFF);
    rates.count(1, vek::log::INVALID);
    EXPECT_EQ(rates.between(1, 1)[0], (Second{3, 0, 0, 0, 0, 0}));
}

TEST(MessageRatesTest, RemembersTenMinutes) {
    MessageRates rates;
    rates.count(5, vek::log::ERR);
    rates.count(604, vek::log::ERR);
    EXPECT_EQ(rates.between(5, 5)[0][1], 1U);
    rates.count(605, vek::log::ERR);
    EXPECT_EQ(rates.between(5, 5)[0][1], 0U);
    EXPECT_EQ(rates.between(604, 605)[1][1], 1U);
}

}  // namespace
