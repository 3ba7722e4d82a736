// The update end to end: what happens when it works.
#include "tests/e2e/procedure_waits.h"
#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"

namespace {

using support::EndState;
using support::Outcome;
using support::TolmarService;

const EndState updated = {
    .installed = 2, .kept = 1, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 2};

class Update : public support::HelperFixture {};

void expectGoodUpdate(const Outcome& outcome, double leastMs) {
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_GE(outcome.milliseconds, leastMs);
}

TEST_F(Update, ReplacesARunningVersionAndKeepsTheOldExecutable) {
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
    EXPECT_EQ(journal(), "1 starting, 1 running, 1 stopping, 1 stopped, 2 starting, 2 running");
}

TEST_F(Update, OfAStoppedServiceSkipsTheWaitForItsStopAndStartsIt) {
    registerService();
    const Outcome outcome = runHelper(installedDirectory);
    expectGoodUpdate(outcome, waits::goodUpdate - waits::stopPoll);
    EXPECT_EQ(endState(), updated);
    EXPECT_EQ(journal(), "2 starting, 2 running");
}

TEST_F(Update, DeletesTheExecutableThatWasKeptFromTheUpdateBefore) {
    support::writeFile(kept(), "the version before the last");
    ASSERT_EQ(versionOf(kept()), -1);
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
}

TEST_F(Update, CanBeDoneTwice) {
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate);
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 2, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 2}));
}

TEST_F(Update, TakesAnUnquotedDirectoryWithABlank) {
    installInto("with a blank");
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
}

TEST_F(Update, TakesAQuotedDirectoryWithABlank) {
    installInto("with a blank");
    runService();
    expectGoodUpdate(runHelper("\"" + installedDirectory + "\""), waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
}

TEST_F(Update, FindsTheNewExecutableThroughPlaceholdersAndInAnyCaseOfTheKey) {
    support::writeFile(pathInfo(), "Top=" + root + "\nQADDATADIR=%top%/fresh/ # the updates\n");
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
}

TEST_F(Update, SkipsAByteOrderMarkAheadOfTheFirstKey) {
    support::writeFile(pathInfo(), "\xEF\xBB\xBFQadDataDir = " + freshDirectory + "\r\n");
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
}

// The prefix that switches off the limit on a path's length.
TEST_F(Update, IsDoneByAHelperThatIsStartedByAPathWithAPrefix) {
    runService();
    support::ChildProcess prefixed("\\\\?\\" + helper(), installedDirectory, root + "\\stderr.txt");
    expectGoodUpdate(finish(prefixed), waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
}

TEST_F(Update, WaitsForASlowStop) {
    behave(1, "stop-delay-ms", 2500);
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate + 2 * waits::stopPoll);
    EXPECT_EQ(endState(), updated);
    EXPECT_EQ(journal(), "1 starting, 1 running, 1 stopping, 1 stopped, 2 starting, 2 running");
}

TEST_F(Update, WaitsForASlowStart) {
    behave(2, "start-delay-ms", 2500);
    runService();
    expectGoodUpdate(runHelper(installedDirectory), waits::goodUpdate + 2 * waits::startPoll);
    EXPECT_EQ(endState(), updated);
}

TEST_F(Update, MovesAsideTheImageOfAProcessThatLingersBehindItsStop) {
    behave(1, "linger-ms", 60000);
    runService();
    const HANDLE oldProcess = TolmarService::openProcess();
    ASSERT_NE(oldProcess, nullptr);
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(WaitForSingleObject(oldProcess, 0), static_cast<DWORD>(WAIT_TIMEOUT))
        << "the old process should still exist";
    CloseHandle(oldProcess);
    expectGoodUpdate(outcome, waits::goodUpdate);
    EXPECT_EQ(endState(), updated);
}

}  // namespace
