// The levels' colours on a real console.
#include <iostream>

#include <gtest/gtest.h>

#include "tests/support/console_fixture.h"
#include "vek/log/level.h"
#include "vek/log/sinks/level_colors.h"

namespace {

using namespace vek::log;

class LevelsOnAConsole : public support::ConsoleTest {
  protected:
    // The attribute that the color of `level` makes of `before`.
    int applied(Level level, int before) const {
        setAttribute(before);
        applyColor(std::cout, levelColor(level));
        return attribute();
    }
};

TEST_F(LevelsOnAConsole, EachHasItsAttribute) {
    const struct {
        Level level;
        int fromWhiteOnBlack;
        int fromBrightCyanOnMagenta;
    } rows[] = {
        {OFF, 0x07, 0x5B},   {ERR, 0x0C, 0x5C},   {WARN, 0x0E, 0x5E},    {INFO, 0x07, 0x5B},
        {DEBUG, 0x02, 0x52}, {TRACE, 0x03, 0x03}, {DEFAULT, 0x3C, 0x3C}, {INVALID, 0x07, 0x5B},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(applied(row.level, 0x07), row.fromWhiteOnBlack) << row.level;
        EXPECT_EQ(applied(row.level, 0x5B), row.fromBrightCyanOnMagenta) << row.level;
    }
}

TEST_F(LevelsOnAConsole, EachEndsWhiteOnBlack) {
    for (int level = OFF; level <= INVALID; ++level) {
        applied(static_cast<Level>(level), 0x5B);
        resetColor(std::cout, vek::ColorReset());
        EXPECT_EQ(attribute(), 0x07) << level;
    }
}

}  // namespace
