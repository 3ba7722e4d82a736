// The end of a process that logs, in processes of their own: by return, by exit, and by exit on
// another thread, which all have to deliver what is queued, and to end.
#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/files.h"

namespace {

// Ends that wait for something for good don't end within this.
constexpr DWORD endLimitMs = 60000;

// What the program wrote to its standard error, if it ended with its exit code.
std::string outputOf(const std::string& how) {
    static int number = 0;
    const std::string file = support::temporaryDirectory() + "\\process_end_" +
                             std::to_string(GetCurrentProcessId()) + "_" + std::to_string(++number);
    support::ChildProcess child(PROCESS_END_PROGRAM, how, file);
    const bool ended = child.waitForEnd(endLimitMs);
    child.terminate();
    std::string text = child.errorText();
    DeleteFileA(file.c_str());
    for (std::size_t at = 0; (at = text.find('\r', at)) != std::string::npos;) {
        text.erase(at, 1);
    }
    if (!ended) {
        return text + "doesn't end";
    }
    return child.exitCode() == 7 ? text : text + "exit code " + std::to_string(child.exitCode());
}

TEST(ProcessEnd, WithoutAManagerIsTheUsualOne) {
    EXPECT_EQ(outputOf("untouched"), "statics end\n");
}

TEST(ProcessEnd, DestroysAManagerThatWasOnlyBuilt) {
    EXPECT_EQ(outputOf("built"), "statics end\n");
}

TEST(ProcessEnd, DestroysASinkUnusedIfNothingWasStarted) {
    EXPECT_EQ(outputOf("not-started"), "0 seen\nstatics end\n");
    EXPECT_EQ(outputOf("not-configured"), "0 seen\nstatics end\n");
}

TEST(ProcessEnd, ByReturnDeliversAll) {
    EXPECT_EQ(outputOf("return"), "5000 seen\nstatics end\n");
}

TEST(ProcessEnd, ByExitDeliversAllThoughTheConfiguratorIsNotDestroyed) {
    EXPECT_EQ(outputOf("exit"), "5000 seen\nstatics end\n");
}

TEST(ProcessEnd, WaitsForASlowSink) {
    EXPECT_EQ(outputOf("slow"), "300 seen\nstatics end\n");
}

TEST(ProcessEnd, ByExitBehindAShutdownLeavesLaterMessagesUnseen) {
    EXPECT_EQ(outputOf("exit-after-shutdown"), "5000 seen\nstatics end\n");
}

TEST(ProcessEnd, ByExitOfAnotherThreadDeliversAll) {
    EXPECT_EQ(outputOf("exit-of-another-thread"), "5000 seen\nstatics end\n");
}

TEST(ProcessEnd, ByExitWhileAnotherThreadLogsDeliversInOrderAndEnds) {
    for (int i = 0; i < 10; ++i) {
        const std::string output = outputOf("exit-while-logging");
        EXPECT_TRUE(output.ends_with(" seen\nstatics end\n")) << output;
    }
}

TEST(ProcessEnd, ByExitWhileTheQueueIsFullEnds) {
    const std::string output = outputOf("full");
    EXPECT_TRUE(output.ends_with("statics end\n")) << output;
}

TEST(ProcessEnd, ByExitOfASinkEndsWithoutMoreOutput) {
    EXPECT_EQ(outputOf("exit-of-the-sink"), "statics end\n");
}

void expectEndWithoutTheWorker(const std::string& how) {
    const std::string output = outputOf(how);
    EXPECT_NE(output.find("died with std::exception: broken\n"), std::string::npos) << output;
    EXPECT_TRUE(output.ends_with("0 seen\nstatics end\n")) << output;
}

TEST(ProcessEnd, EndsAlsoIfTheWorkerHasDied) {
    expectEndWithoutTheWorker("broken");
}

TEST(ProcessEnd, EndsAlsoIfTheWorkerHasDiedAndTheQueueIsFull) {
    expectEndWithoutTheWorker("broken-full");
}

TEST(ProcessEnd, EndsAlsoIfTheWorkerDiesWhileTheEndWaitsForRoom) {
    expectEndWithoutTheWorker("broken-at-the-end");
}

TEST(ProcessEnd, EndsAlsoIfAShutdownWaitsForADeadWorkerForGood) {
    expectEndWithoutTheWorker("broken-shutdown");
}

TEST(ProcessEnd, EndsAlsoIfBusyThreadsTakeTheRoomThatSuchAShutdownWaitsFor) {
    expectEndWithoutTheWorker("broken-shutdown-busy");
}

}  // namespace
