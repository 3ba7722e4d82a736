#include "vek/base/environment_block.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::EnvironmentBlock;

TEST(EnvironmentBlock, HoldsEveryVariable) {
    SetEnvironmentVariableA("VEK_BLOCK_TEST_A", "1");
    SetEnvironmentVariableA("VEK_BLOCK_TEST_B", "");
    const EnvironmentBlock block;
    SetEnvironmentVariableA("VEK_BLOCK_TEST_A", nullptr);
    SetEnvironmentVariableA("VEK_BLOCK_TEST_B", nullptr);

    std::vector<std::string> found;
    std::size_t entries = 0;
    for (const char* entry = block.begin(); entry != block.end(); entry += std::strlen(entry) + 1) {
        ++entries;
        if (std::strncmp(entry, "VEK_BLOCK_TEST_", 15) == 0) {
            found.push_back(entry);
        }
    }
    EXPECT_EQ(found, (std::vector<std::string>{"VEK_BLOCK_TEST_A=1", "VEK_BLOCK_TEST_B="}));
    EXPECT_GT(entries, 2u);
}

TEST(EnvironmentBlock, EndMarkerEqualsAnEmptyEntryOnly) {
    const EnvironmentBlock::EndMarker end;
    EXPECT_TRUE("" == end);
    EXPECT_TRUE(end == "");
    EXPECT_FALSE("" != end);
    EXPECT_TRUE("A=1" != end);
    EXPECT_TRUE(end != "A=1");
}

TEST(EnvironmentBlock, IsNotCopied) {
    static_assert(!std::is_copy_constructible_v<EnvironmentBlock>);
    static_assert(!std::is_copy_assignable_v<EnvironmentBlock>);
}

// Takes the block away from under its owner, so that the system refuses to take it back. Ends with
// 7 if exactly the report was written.
[[noreturn]] void destroyABlockThatIsGone() {
    std::ostringstream written;
    auto* const errorStream = std::cerr.rdbuf(written.rdbuf());
    {
        const EnvironmentBlock block;
        FreeEnvironmentStringsA(const_cast<char*>(block.begin()));
    }
    std::cerr.rdbuf(errorStream);
    const std::string expected =
        "Error freeing environment block:" + vek::OsError(ERROR_INVALID_PARAMETER).printableText() +
        "\n";
    std::cerr << written.str();
    std::exit(written.str() == expected ? 7 : 8);
}

TEST(EnvironmentBlockDeathTest, FailureToFreeIsReportedAndDoesNotLeaveTheDestructor) {
    EXPECT_EXIT(destroyABlockThatIsGone(), testing::ExitedWithCode(7),
                "Error freeing environment block:");
}

}  // namespace
