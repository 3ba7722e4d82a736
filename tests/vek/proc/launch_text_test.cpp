#include "vek/proc/launch_text.h"

#include <gtest/gtest.h>

namespace {

using vek::proc::affinityMask;
using vek::proc::environmentBlock;
using vek::proc::quotedCommandLine;

TEST(AffinityMask, HasTheLowestProcessorsSet) {
    EXPECT_EQ(affinityMask(0), 0u);
    EXPECT_EQ(affinityMask(1), 1u);
    EXPECT_EQ(affinityMask(2), 3u);
    EXPECT_EQ(affinityMask(31), 0x7FFFFFFFu);
    EXPECT_EQ(affinityMask(32), 0xFFFFFFFFu);
}

TEST(QuotedCommandLine, QuotesEachArgumentAndProtectsNothing) {
    EXPECT_EQ(quotedCommandLine({"C:\\a b.exe"}), "\"C:\\a b.exe\"");
    EXPECT_EQ(quotedCommandLine({"p", "", "x y", "q\"r", "z\\"}),
              "\"p\" \"\" \"x y\" \"q\"r\" \"z\\\"");
}

TEST(EnvironmentBlock, EndsEachEntryByAZeroByteAndTheBlockByTheStringsOwn) {
    EXPECT_EQ(environmentBlock({"A=1", "B=two"}), std::string("A=1\0B=two\0", 10));
    EXPECT_EQ(environmentBlock({"A=1"}).c_str()[4], '\0');
    EXPECT_EQ(environmentBlock({}), "");
}

}  // namespace
