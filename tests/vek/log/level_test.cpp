#include "vek/log/level.h"

#include <gtest/gtest.h>

#include "vek/exception.h"

namespace {

using namespace vek::log;

const std::pair<Level, std::string> table[] = {
    {OFF, "OFF"},     {ERR, "ERR"},     {WARN, "WARN"},       {INFO, "INFO"},
    {DEBUG, "DEBUG"}, {TRACE, "TRACE"}, {DEFAULT, "DEFAULT"}, {INVALID, "INVALID"}};

// Run before main, and possibly before level.cpp's own initialisers would run.
const std::string nameAheadOfMain = levelName(TRACE);
const Level levelAheadOfMain = parseLevel("trace");

TEST(Level, HasTheNumbersAndNamesOfTheScale) {
    std::int32_t value = 0;
    for (const auto& [level, name] : table) {
        EXPECT_EQ(level, value++);
        EXPECT_EQ(levelName(level), name);
    }
    EXPECT_EQ(sizeof(Level), 4u);
}

TEST(Level, NamesAreThereAheadOfMain) {
    EXPECT_EQ(nameAheadOfMain, "TRACE");
    EXPECT_EQ(levelAheadOfMain, TRACE);
}

TEST(ParseLevel, TakesEveryNameButTheLastInAnyCase) {
    for (const auto& [level, name] : table) {
        if (level == INVALID) {
            continue;
        }
        std::string lower = name;
        std::string mixed = name;
        for (char& ch : lower) {
            ch = static_cast<char>(std::tolower(ch));
        }
        mixed[1] = static_cast<char>(std::tolower(mixed[1]));
        EXPECT_EQ(parseLevel(name), level);
        EXPECT_EQ(parseLevel(lower), level);
        EXPECT_EQ(parseLevel(mixed), level);
    }
}

TEST(ParseLevel, IgnoresWhiteSpaceAtBothEnds) {
    EXPECT_EQ(parseLevel("  trace\t"), TRACE);
    EXPECT_EQ(parseLevel("\r\n\v\f WARN \r\n\v\f"), WARN);
}

std::string refusalOf(const std::string& text) {
    try {
        parseLevel(text);
    } catch (const vek::UsageError& error) {
        return error.what();
    }
    return "taken";
}

TEST(ParseLevel, RefusesAnythingElseAndTellsItAsItWasGiven) {
    EXPECT_EQ(refusalOf("INVALID"), "Usage error: Invalid LEVEL string \"INVALID\"");
    EXPECT_EQ(refusalOf(""), "Usage error: Invalid LEVEL string \"\"");
    EXPECT_EQ(refusalOf("  \t"), "Usage error: Invalid LEVEL string \"  \t\"");
    EXPECT_EQ(refusalOf(" Loud "), "Usage error: Invalid LEVEL string \" Loud \"");
    EXPECT_EQ(refusalOf("%s%n"), "Usage error: Invalid LEVEL string \"%s%n\"");
    EXPECT_EQ(refusalOf("4"), "Usage error: Invalid LEVEL string \"4\"");
    EXPECT_EQ(refusalOf("WARNING"), "Usage error: Invalid LEVEL string \"WARNING\"");
    EXPECT_EQ(refusalOf("WA RN"), "Usage error: Invalid LEVEL string \"WA RN\"");
    EXPECT_EQ(refusalOf("\xe4WARN\xff"), "Usage error: Invalid LEVEL string \"\xe4WARN\xff\"");
    const std::string long_(100000, 'W');
    EXPECT_EQ(refusalOf(long_), "Usage error: Invalid LEVEL string \"" + long_ + "\"");
}

TEST(ParseLevel, DoesNotStopAtAZeroByte) {
    EXPECT_NE(refusalOf(std::string("WARN\0", 5)), "taken");
}

}  // namespace
