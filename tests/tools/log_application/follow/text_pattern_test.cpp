#include "tools/log_application/follow/text_pattern.h"

#include <gtest/gtest.h>

#include "tools/log_application/program/deep_stack.h"

namespace {

using namespace log_application;
using Found = TextPattern::Found;

TEST(TextPattern, FindsWhatTheExpressionMeans) {
    EXPECT_EQ(TextPattern("^net.*(up|down)$").search("net is up"), Found::yes);
    EXPECT_EQ(TextPattern("^net").search("the net"), Found::no);
    EXPECT_EQ(TextPattern("(a.)\\1").search("xabab"), Found::yes);
    EXPECT_EQ(TextPattern("(?!a)b").search("ab"), Found::yes);
    EXPECT_EQ(TextPattern("").search(""), Found::yes);
    EXPECT_EQ(TextPattern("\\bx\\b").search("a x b"), Found::yes);
    EXPECT_EQ(TextPattern("a").search(std::string("\0a", 2)), Found::yes);
}

TEST(TextPattern, GivesUpAheadOfTheEndOfTheStack) {
    const TextPattern pattern("^(x|y)*$");
    EXPECT_EQ(pattern.search(std::string(1'000'000, 'x')), Found::undecided);
    // And is as good as before afterwards.
    EXPECT_EQ(pattern.search("xyx"), Found::yes);
}

TEST(TextPattern, ADeepStackIsEnoughForTheLongestLineOfAProcess) {
    Found found = Found::undecided;
    Found hostile = Found::no;
    runOnDeepStack([&] {
        found = TextPattern("^(((x)|y))*$").search(std::string(16'380, 'x'));
        hostile = TextPattern("^(((x)|y))*$").search(std::string(10'000'000, 'x'));
    });
    EXPECT_EQ(found, Found::yes);
    EXPECT_EQ(hostile, Found::undecided);
}

TEST(TextPattern, GivesUpASearchThatWouldTakeYears) {
    EXPECT_EQ(TextPattern("^(x+)+$").search(std::string(60, 'x') + "y", 1'000'000),
              Found::undecided);
}

}  // namespace
