// The helper has no user, so it must never show a message box, which nobody would close.
#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"

namespace {

TEST(UnattendedProgram, ThatAbortsShowsNoMessageBox) {
    support::ChildProcess program(ABORTING_PROGRAM, "",
                                  support::temporaryDirectory() + "\\aborting-program.txt");
    ASSERT_TRUE(program.waitForEnd(support::limitMs)) << "it waits for somebody to close a box";
    EXPECT_EQ(program.exitCode(), 3u);
}

}  // namespace
