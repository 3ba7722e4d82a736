#include "tests/vek/thread_names_debugger.h"

namespace {

TEST(ThreadNames, AreToldToADebugger) {
    const vek::test::Debugged seen = vek::test::debugTest("Threads.WithAndWithoutANameRunAlike");
    ASSERT_EQ(seen.namings.size(), 1u);
    EXPECT_EQ(seen.namings[0].name, "log-manager");
    EXPECT_TRUE(seen.namings[0].fromTheNamedThread);
    EXPECT_EQ(seen.exitCode, 0u);
}

}  // namespace
