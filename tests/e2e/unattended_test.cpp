// The helper has no user: nothing that goes wrong may wait for one to close a message box.
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
