#include "vek/log/config/file_cost.h"

#include <ostream>

#include <gtest/gtest.h>

namespace vek::log {

bool operator==(const ConfigCost& left, const ConfigCost& right) {
    return left.settings == right.settings && left.elements == right.elements &&
           left.longestPiece == right.longestPiece;
}

void PrintTo(const ConfigCost& cost, std::ostream* out) {
    *out << cost.settings << " settings, " << cost.elements << " elements, longest piece "
         << cost.longestPiece;
}

namespace {

TEST(ConfigCost, OfNothingIsNothing) {
    EXPECT_EQ(costOfConfig(""), (ConfigCost{0, 0, 0}));
}

TEST(ConfigCost, CountsSettingsByEitherSeparatorAndElementsByTheirCommas) {
    EXPECT_EQ(costOfConfig("a=1;"), (ConfigCost{1, 0, 2}));
    EXPECT_EQ(costOfConfig("a:{b=1,c=2}"), (ConfigCost{3, 1, 3}));
    EXPECT_EQ(costOfConfig("a=(1,2,3)"), (ConfigCost{1, 2, 3}));
}

TEST(ConfigCost, LooksIntoNoTextAndNoComment) {
    EXPECT_EQ(costOfConfig("\"=,:\""), (ConfigCost{0, 0, 4}));
    EXPECT_EQ(costOfConfig("\"\\\"=\""), (ConfigCost{0, 0, 3}));
    EXPECT_EQ(costOfConfig("#=,\na=1"), (ConfigCost{1, 0, 4}));
    EXPECT_EQ(costOfConfig("//=,\na=1"), (ConfigCost{1, 0, 5}));
    EXPECT_EQ(costOfConfig("/*=,:=\n*/a=1"), (ConfigCost{1, 0, 2}));
    EXPECT_EQ(costOfConfig("\"#\"=1"), (ConfigCost{1, 0, 2}));
    EXPECT_EQ(costOfConfig("\"//\"=1\"/*\"=2"), (ConfigCost{2, 0, 3}));
}

TEST(ConfigCost, LongestPieceIsThatOfACommentATextOrAStretchOfWords) {
    EXPECT_EQ(costOfConfig("# 3456789\n").longestPiece, 10u);
    EXPECT_EQ(costOfConfig("// 456789").longestPiece, 9u);
    EXPECT_EQ(costOfConfig("\"12345\\n678\"").longestPiece, 6u);
    EXPECT_EQ(costOfConfig("a b c d\n").longestPiece, 7u);
    EXPECT_EQ(costOfConfig("        ").longestPiece, 8u);
    EXPECT_EQ(costOfConfig("/* 3456789 */").longestPiece, 0u);
}

TEST(ConfigCost, TakesTextsThatEndAnywhere) {
    for (const char* const text :
         {"\"", "\"\\", "\"abc", "#", "/", "/*", "/*/", "/* *", "//", "\\"}) {
        const ConfigCost cost = costOfConfig(text);
        EXPECT_EQ(cost.settings, 0u) << text;
        EXPECT_LE(cost.longestPiece, 4u) << text;
    }
    EXPECT_EQ(costOfConfig("/*/=*/a=1").settings, 1u);
}

}  // namespace

}  // namespace vek::log
