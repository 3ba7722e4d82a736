#include "vek/log/sinks/level_colors.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "vek/log/level.h"

namespace {

using vek::ColorSpec;
using namespace vek::log;

struct Row {
    std::int32_t level;
    std::int32_t foreground;
    bool foregroundBright;
    std::int32_t background;
};

constexpr Row rows[] = {
    {OFF, -1, false, -1},  {ERR, 1, true, -1},   {WARN, 3, true, -1},   {INFO, -1, false, -1},
    {DEBUG, 2, false, -1}, {TRACE, 6, false, 0}, {DEFAULT, 1, true, 6}, {INVALID, -1, false, -1},
};

void expectColor(const ColorSpec& color, const Row& row) {
    EXPECT_EQ(color.foreground, row.foreground);
    EXPECT_EQ(color.foregroundBright, row.foregroundBright);
    EXPECT_EQ(color.background, row.background);
    EXPECT_FALSE(color.backgroundBright);
    EXPECT_FALSE(color.force);
}

// Read before main.
const ColorSpec readEarly = levelColor(DEFAULT);

TEST(LevelColors, EachLevelHasItsColor) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.level);
        expectColor(levelColor(row.level), row);
    }
}

TEST(LevelColors, NumbersThatAreNoLevelTouchNothing) {
    for (const std::int32_t number : {-1, 8, std::numeric_limits<std::int32_t>::min(),
                                      std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(&levelColor(number), &levelColor(INVALID));
    }
}

TEST(LevelColors, StandBeforeMain) {
    expectColor(readEarly, rows[DEFAULT]);
}

}  // namespace
