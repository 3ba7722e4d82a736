// The update end to end: how it fails, the state that each failure leaves, and the operator's way
// out of it.
#include <array>
#include <fstream>

#include "tests/e2e/procedure_waits.h"
#include "tests/support/files.h"
#include "tests/support/helper_fixture.h"
#include "vek/base/os_error_text.h"

namespace {

using support::EndState;
using support::limitMs;
using support::Outcome;
using support::TolmarService;

const EndState untouched = {
    .installed = 1, .kept = 0, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 1};
const EndState movedAside = {
    .installed = 0, .kept = 1, .fresh = 2, .serviceState = SERVICE_STOPPED, .running = 0};

class FailingUpdate : public support::HelperFixture {
  protected:
    // What an operator does if there is no tolmar.exe.
    void recover() {
        ASSERT_NE(MoveFileA(kept().c_str(), installed().c_str()), 0) << GetLastError();
        startService();
        EXPECT_EQ(endState(), untouched);
    }
};

HANDLE openUnshared(const std::string& path, DWORD share) {
    return CreateFileA(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

TEST_F(FailingUpdate, WithoutTheServiceEndsAtOnceAndTouchesNothing) {
    support::writeFile(kept(), "kept from before");
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_LT(outcome.milliseconds, support::atOnceMs);
    EXPECT_EQ(endState(),
              (EndState{.installed = 1, .kept = -1, .fresh = 2, .serviceState = 0, .running = 0}));
    EXPECT_EQ(support::readFile(kept()), "kept from before");
}

TEST_F(FailingUpdate, OfAServiceThatRefusesToStopEndsAtOnceAndTouchesNothing) {
    behave(1, "refuses-stop", 1);
    runService();
    ASSERT_NE(TolmarService::askToStop(), 0u);
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_LT(outcome.milliseconds, support::atOnceMs);
    EXPECT_EQ(endState(), untouched);
    EXPECT_EQ(journal(), "1 starting, 1 running");
}

TEST_F(FailingUpdate, OfAServiceThatIsStillStartingEndsAtOnceAndTouchesNothing) {
    behave(1, "starts-forever", 1);
    registerService();
    TolmarService::start();
    ASSERT_TRUE(TolmarService::waitForState(SERVICE_START_PENDING, limitMs));
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_LT(outcome.milliseconds, support::atOnceMs);
    EXPECT_EQ(endState(), (EndState{.installed = 1,
                                    .kept = 0,
                                    .fresh = 2,
                                    .serviceState = SERVICE_START_PENDING,
                                    .running = 0}));
}

// The stop counts as done as soon as the state isn't "stop pending".

TEST_F(FailingUpdate, OfAServiceThatTakesTheStopAndRunsOnEndsWithZeroWhileTheOldVersionRuns) {
    behave(1, "ignores-stop", 1);
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 1, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 1}));
}

TEST_F(FailingUpdate, OfAServiceThatTakesTheStopAndStopsLateEndsWithZeroAndThenNothingRuns) {
    behave(1, "late-stop-ms", 20000);
    runService();
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    EXPECT_EQ(endState().running, 1);
    EXPECT_TRUE(TolmarService::waitForState(SERVICE_STOPPED, limitMs));
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 1, .fresh = 2, .serviceState = SERVICE_STOPPED, .running = 0}));
}

TEST_F(FailingUpdate, WithABadDefaultLevelTellsWhyAndTouchesNothing) {
    runService();
    SetEnvironmentVariableA("VEKLOG_DEFAULT_LEVEL", "DEFAULT");
    const Outcome outcome = runHelper(installedDirectory);
    SetEnvironmentVariableA("VEKLOG_DEFAULT_LEVEL", nullptr);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "Usage error: log manager: bad default level value");
    EXPECT_EQ(endState(), untouched);
}

// The line of docs/helper.md that shows a message.
std::string lineThatShowsTheMessage() {
    std::ifstream document(HELPER_DOCUMENT);
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("start ")) {
            return line;
        }
    }
    ADD_FAILURE() << "no such line in " << HELPER_DOCUMENT;
    return "";
}

TEST_F(FailingUpdate, ShowsItsMessageByTheLineOfTheDocumentation) {
    SetEnvironmentVariableA("VEKLOG_DEFAULT_LEVEL", "DEFAULT");
    std::array<char, MAX_PATH> shell = {};
    GetEnvironmentVariableA("ComSpec", shell.data(), MAX_PATH);
    // Like the operator, in the directory of the helper.
    const std::string inItsDirectory = "/c \"cd /d " + helperDirectory + " && ";
    support::ChildProcess line(shell.data(), inItsDirectory + lineThatShowsTheMessage() + "\"",
                               root + "\\line.txt");
    EXPECT_TRUE(line.waitForEnd(limitMs));
    SetEnvironmentVariableA("VEKLOG_DEFAULT_LEVEL", nullptr);
    EXPECT_EQ(support::readFile(helperDirectory + "\\error.txt"),
              "Usage error: log manager: bad default level value");
}

TEST_F(FailingUpdate, WithAReadOnlyNewExecutableSucceedsTwiceAndThenLeavesTheServiceDown) {
    ASSERT_NE(SetFileAttributesA(fresh().c_str(), FILE_ATTRIBUTE_READONLY), 0);
    runService();
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 1u);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 2, .fresh = 2, .serviceState = SERVICE_STOPPED, .running = 0}));
    for (const std::string& file : {installed(), kept(), fresh()}) {
        EXPECT_NE(SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL), 0) << file;
    }
}

// Each deletes what the other has kept.
TEST_F(FailingUpdate, ByTwoHelpersAtOnceEndsWithZeroTwiceAndLosesTheOldVersion) {
    runService();
    const auto first = startHelper(installedDirectory);
    ASSERT_TRUE(support::waitUntil([&] { return journal().ends_with("2 running"); }, limitMs));
    EXPECT_EQ(runHelper(installedDirectory).exitCode, 0u);
    EXPECT_EQ(finish(*first).exitCode, 0u);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 2, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 2}));
}

TEST_F(FailingUpdate, WithoutPathInfoIniTellsWhyAndLeavesTheExecutableMovedAside) {
    ASSERT_NE(DeleteFileA(pathInfo().c_str()), 0);
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText,
              "PathInfo Error: failed to load config file: File system error at location: \"" +
                  helperDirectory + "/pathinfo.ini\": " + vek::osErrorText(ERROR_FILE_NOT_FOUND) +
                  " (2)");
    EXPECT_GE(outcome.milliseconds, waits::stopPoll + waits::pause);
    EXPECT_EQ(endState(), movedAside);
    recover();
}

TEST_F(FailingUpdate, WithAPathInfoIniInUtf16SaysSoAndLeavesTheExecutableMovedAside) {
    std::string text = "\xFF\xFE";
    for (const char byte : "QadDataDir = " + freshDirectory + "\r\n") {
        text += {byte, '\0'};
    }
    support::writeFile(pathInfo(), text);
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(
        outcome.errorText,
        "PathInfo Error: failed to load config file: File system error at location: \"" +
            helperDirectory +
            "/pathinfo.ini\": The file is in UTF-16. Save it in the system's ANSI code page.");
    EXPECT_EQ(endState(), movedAside);
    recover();
}

TEST_F(FailingUpdate, WithoutTheKeyTellsWhyAndLeavesTheExecutableMovedAside) {
    support::writeFile(pathInfo(), "AnotherDir = " + freshDirectory + "\n");
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.errorText, "PathInfo Error: key \"QadDataDir\" not found (1)");
    EXPECT_EQ(endState(), movedAside);
    recover();
}

TEST_F(FailingUpdate, WithoutANewExecutableGivesUpAfter31AttemptsAndRestoresNothing) {
    ASSERT_NE(MoveFileA(fresh().c_str(), (fresh() + ".late").c_str()), 0);
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 1u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_GE(outcome.milliseconds, waits::stopPoll + waits::pause + waits::attempts);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 0, .kept = 1, .fresh = 0, .serviceState = SERVICE_STOPPED, .running = 0}));
    ASSERT_NE(MoveFileA((fresh() + ".late").c_str(), fresh().c_str()), 0);
    recover();
}

TEST_F(FailingUpdate, TakesANewExecutableThatTurnsUpBetweenTheAttempts) {
    ASSERT_NE(MoveFileA(fresh().c_str(), (fresh() + ".late").c_str()), 0);
    runService();
    const auto helper = startHelper(installedDirectory);
    ASSERT_TRUE(support::waitUntil([&] { return support::exists(kept()); }, limitMs));
    EXPECT_FALSE(helper->waitForEnd(2000));
    EXPECT_FALSE(support::exists(installed()));
    ASSERT_NE(MoveFileA((fresh() + ".late").c_str(), fresh().c_str()), 0);
    EXPECT_EQ(finish(*helper).exitCode, 0u);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 1, .fresh = 2, .serviceState = SERVICE_RUNNING, .running = 2}));
}

TEST_F(FailingUpdate, WithAKeptExecutableThatIsHeldOpenGivesUpAfter31Attempts) {
    support::writeFile(kept(), "kept from before");
    runService();
    const HANDLE held = openUnshared(kept(), FILE_SHARE_READ);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const Outcome outcome = runHelper(installedDirectory);
    CloseHandle(held);
    EXPECT_EQ(outcome.exitCode, 1u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_GE(outcome.milliseconds, waits::stopPoll + waits::attempts);
    EXPECT_EQ(endState(), (EndState{.installed = 1,
                                    .kept = -1,
                                    .fresh = 2,
                                    .serviceState = SERVICE_STOPPED,
                                    .running = 0}));
    EXPECT_EQ(support::readFile(kept()), "kept from before");
    startService();
}

TEST_F(FailingUpdate, WithADirectoryInPlaceOfTheKeptExecutableGivesUpAfter31Attempts) {
    support::makeDirectory(kept());
    runService();
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 1u);
    EXPECT_GE(outcome.milliseconds, waits::stopPoll + waits::attempts);
    EXPECT_EQ(endState(), (EndState{.installed = 1,
                                    .kept = -1,
                                    .fresh = 2,
                                    .serviceState = SERVICE_STOPPED,
                                    .running = 0}));
    startService();
}

// The new version runs for a moment, so the start counts as done; then it never runs again.
class BadNewVersion : public FailingUpdate {
  protected:
    void SetUp() override {
        FailingUpdate::SetUp();
        behave(2, "falls-after-ms", 200);
        behave(2, "stop-delay-ms", 4000);
        runService();
    }
};

TEST_F(BadNewVersion, StaysInPlaceWhereTheRollBackRunsOut) {
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 1u);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_GE(outcome.milliseconds, waits::failedRollBack);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 2, .kept = 1, .fresh = 2, .serviceState = SERVICE_STOPPED, .running = 0}));
    EXPECT_EQ(journal(),
              "1 starting, 1 running, 1 stopping, 1 stopped, "
              "2 starting, 2 running, 2 stopping, 2 stopped");
    ASSERT_NE(DeleteFileA(installed().c_str()), 0) << GetLastError();
    recover();
}

TEST_F(BadNewVersion, IsRolledBackWhereSomebodyTakesItAwayMeanwhile) {
    const auto helper = startHelper(installedDirectory);
    ASSERT_TRUE(support::waitUntil([&] { return journal().ends_with("2 stopped"); }, limitMs));
    ASSERT_TRUE(support::waitUntil([&] { return DeleteFileA(installed().c_str()) != 0; }, limitMs));
    const Outcome outcome = finish(*helper);
    EXPECT_EQ(outcome.exitCode, 1u);
    EXPECT_GE(outcome.milliseconds, waits::stopPoll + 2 * waits::pause + waits::startPoll +
                                        waits::watch + waits::pause + waits::startPoll);
    EXPECT_EQ(endState(), untouched);
}

class EndlessWait : public FailingUpdate {
  protected:
    // A helper that waits for nothing would have given up on the new version within this time.
    static constexpr DWORD observeMs = static_cast<DWORD>(waits::failedRollBack) + 2000;

    void expectToBeKeptWaiting(const EndState& meanwhile) {
        runService();
        const auto helper = startHelper(installedDirectory);
        EXPECT_FALSE(helper->waitForEnd(observeMs)) << "exit code " << helper->exitCode();
        EXPECT_EQ(endState(), meanwhile);
    }

    static EndState newVersionIn(DWORD serviceState) {
        return {.installed = 2, .kept = 1, .fresh = 2, .serviceState = serviceState, .running = 0};
    }
};

TEST_F(EndlessWait, HoldsForANewVersionThatNeverGetsDoneStarting) {
    behave(2, "starts-forever", 1);
    expectToBeKeptWaiting(newVersionIn(SERVICE_START_PENDING));
}

TEST_F(EndlessWait, HoldsForANewVersionThatStopsWhileStarting) {
    behave(2, "dies-while-starting", 1);
    expectToBeKeptWaiting(newVersionIn(SERVICE_STOPPED));
    EXPECT_EQ(journal(), "1 starting, 1 running, 1 stopping, 1 stopped, 2 starting, 2 stopped");
}

TEST_F(EndlessWait, HoldsForANewVersionThatDiesBeforeItConnects) {
    behave(2, "dies-before-connecting", 1);
    expectToBeKeptWaiting(newVersionIn(SERVICE_STOPPED));
    EXPECT_EQ(journal(), "1 starting, 1 running, 1 stopping, 1 stopped");
}

TEST_F(EndlessWait, HoldsForAnOldVersionThatNeverGetsDoneStopping) {
    behave(1, "stop-delay-ms", 60000);
    expectToBeKeptWaiting({.installed = 1,
                           .kept = 0,
                           .fresh = 2,
                           .serviceState = SERVICE_STOP_PENDING,
                           .running = 0});
}

// Without a warning: put the old version back before you run the helper again.
TEST_F(FailingUpdate, RunAgainWithTheExecutableMovedAsideDeletesTheKeptOneToo) {
    registerService();
    ASSERT_NE(MoveFileA(installed().c_str(), kept().c_str()), 0);
    ASSERT_EQ(endState(), movedAside);
    const Outcome outcome = runHelper(installedDirectory);
    EXPECT_EQ(outcome.exitCode, 1u);
    EXPECT_GE(outcome.milliseconds, waits::attempts);
    EXPECT_EQ(
        endState(),
        (EndState{
            .installed = 0, .kept = 0, .fresh = 2, .serviceState = SERVICE_STOPPED, .running = 0}));
}

TEST_F(FailingUpdate, KilledBetweenTheMoveAndTheCopyLeavesNoExecutable) {
    runService();
    // The copy can't succeed while this is open, so there is time to hit the helper in between.
    const HANDLE held = openUnshared(fresh(), 0);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const auto helper = startHelper(installedDirectory);
    EXPECT_TRUE(support::waitUntil([&] { return support::exists(kept()); }, limitMs));
    helper->terminate();
    CloseHandle(held);
    EXPECT_EQ(helper->exitCode(), 99u) << "the helper had ended by itself";
    EXPECT_EQ(endState(), movedAside);
    recover();
}

}  // namespace
