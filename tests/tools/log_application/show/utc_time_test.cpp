#include "tools/log_application/show/utc_time.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using log_application::isoUtc;

TEST(IsoUtc, HasMillisecondsAndTheLetterOfUtc) {
    EXPECT_EQ(isoUtc(0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(isoUtc(1'700'000'000'123), "2023-11-14T22:13:20.123Z");
    EXPECT_EQ(isoUtc(1'709'211'909'007), "2024-02-29T13:05:09.007Z");
    EXPECT_EQ(isoUtc(951'782'400'000 - 1), "2000-02-28T23:59:59.999Z");
    EXPECT_EQ(isoUtc(4'107'542'400'000), "2100-03-01T00:00:00.000Z");
}

TEST(IsoUtc, GoesBehind1970) {
    EXPECT_EQ(isoUtc(-1), "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(isoUtc(-2'203'891'200'001), "1900-02-28T23:59:59.999Z");
}

TEST(IsoUtc, TakesAnyNumber) {
    EXPECT_EQ(isoUtc(253'402'300'799'999), "9999-12-31T23:59:59.999Z");
    EXPECT_EQ(isoUtc(253'402'300'800'000), "+10000-01-01T00:00:00.000Z");
    EXPECT_EQ(isoUtc(std::numeric_limits<std::int64_t>::max()), "+292278994-08-17T07:12:55.807Z");
    EXPECT_EQ(isoUtc(std::numeric_limits<std::int64_t>::min()), "-292275055-05-16T16:47:04.192Z");
}

}  // namespace
