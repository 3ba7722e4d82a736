#include "tools/log_application/connection/level_change.h"

#include <gtest/gtest.h>

#include "tools/log_application/program/failure.h"

namespace {

using namespace log_application;

TEST(LevelChange, IsANameAndALevelInAnyCase) {
    const LevelChange change = parseLevelChange("my logger=debug");
    EXPECT_EQ(change.logger, "my logger");
    EXPECT_EQ(change.level, vek::log::DEBUG);
    EXPECT_EQ(parseLevelChange("a=DEFAULT").level, vek::log::DEFAULT);
    EXPECT_EQ(parseLevelChange("a=OFF").level, vek::log::OFF);
}

TEST(LevelChange, ANameMayBeAsLongAsTheWireTakes) {
    const std::string name(longestLoggerName, 'x');
    EXPECT_EQ(parseLevelChange(name + "=INFO").logger, name);
    EXPECT_THROW(parseLevelChange(name + "x=INFO"), Failure);
    // The longest request: its type, the name, and the longest level.
    EXPECT_LE(std::string("change-scope:").size() + name.size() + std::string("=DEFAULT").size(),
              longestRequest);
}

TEST(LevelChange, AnythingElseIsWrongUsage) {
    for (const char* const text : {"", "a", "=INFO", "a=", "a=LOUD", "a=INVALID", "a=7", "a=b=INFO",
                                   "a\x1F"
                                   "b=INFO"}) {
        try {
            parseLevelChange(text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), exitUsage);
            EXPECT_FALSE(failure.whatNext().empty());
        }
    }
}

TEST(Severity, IsNeitherDefaultNorInvalid) {
    EXPECT_EQ(parseSeverity("--default", "trace"), vek::log::TRACE);
    EXPECT_EQ(parseSeverity("--default", "OFF"), vek::log::OFF);
    EXPECT_THROW(parseSeverity("--default", "DEFAULT"), Failure);
    EXPECT_THROW(parseSeverity("--default", "INVALID"), Failure);
    EXPECT_THROW(parseSeverity("--default", ""), Failure);
}

TEST(Time, HasAUnitOrCountsSeconds) {
    EXPECT_EQ(parseTime("--for", "10m"), 600'000);
    EXPECT_EQ(parseTime("--for", "90s"), 90'000);
    EXPECT_EQ(parseTime("--for", "1500ms"), 1500);
    EXPECT_EQ(parseTime("--for", "2h"), 7'200'000);
    EXPECT_EQ(parseTime("--for", "30"), 30'000);
    EXPECT_EQ(parseTime("--for", "52w"), 31'449'600'000);
}

TEST(Time, AnythingElseIsWrongUsage) {
    for (const char* const text :
         {"", "0", "0s", "-1s", "s", "10 m", "10x", "10m!", "10mm", "1.5s", "1ns", "2y",
          "99999999999s", "999999999y", "18446744073709551617s"}) {
        EXPECT_THROW(parseTime("--for", text), Failure) << text;
    }
}

}  // namespace
