#include <thread>

#include "tests/vek/proc/proc_test.h"
#include "vek/proc/shepherd.h"
#include "vek/time/clock.h"

namespace {

using vek::OsError;
using vek::RuntimeError;
using vek::UsageError;
using vek::proc::Child;
using vek::proc::ExitStatus;
using vek::test::NamedEvent;

class ChildWait : public vek::test::ProcTest {
  protected:
    static ExitStatus statusOfExit(const std::string& code) {
        Child child;
        prepare(child, {"exit", code});
        child.start();
        return waited(child);
    }
};

TEST_F(ChildWait, GivesTheWholeExitCode) {
    for (const char* code : {"0", "1", "255", "256", "4294967295", "3221225477"}) {
        const ExitStatus status = statusOfExit(code);
        EXPECT_TRUE(status.finished);
        EXPECT_FALSE(status.killed);
        EXPECT_EQ(std::to_string(status.code), code);
    }
}

TEST_F(ChildWait, ExitCode259IsAnEndLikeAnyOther) {
    const ExitStatus status = statusOfExit("259");
    EXPECT_TRUE(status.finished);
    EXPECT_EQ(status.code, 259u);
}

TEST_F(ChildWait, ChildThatExitsWithTheKillCodeByItselfCountsAsKilled) {
    const ExitStatus status = statusOfExit("37125");
    EXPECT_TRUE(status.finished);
    EXPECT_TRUE(status.killed);
    EXPECT_EQ(status.code, 37125u);
    EXPECT_FALSE(status.succeeded());
}

TEST_F(ChildWait, KilledChildCountsAsKilled) {
    const NamedEvent never;
    Child child;
    prepare(child, {"wait", never.name, "0"});
    child.start();
    Child::kill(child.getProcess().dwProcessId);
    const ExitStatus status = waited(child);
    EXPECT_TRUE(status.finished);
    EXPECT_TRUE(status.killed);
    EXPECT_EQ(status.code, 37125u);
}

TEST_F(ChildWait, ChildEndedFromElsewhereWithAnotherCodeDoesNotCountAsKilled) {
    const NamedEvent never;
    Child child;
    prepare(child, {"wait", never.name, "0"});
    child.start();
    TerminateProcess(child.getProcess().hProcess, 6);
    const ExitStatus status = waited(child);
    EXPECT_FALSE(status.killed);
    EXPECT_EQ(status.code, 6u);
}

TEST_F(ChildWait, KillOfAChildThatHasEndedChangesNothing) {
    Child child;
    prepare(child, {"exit", "8"});
    child.start();
    ASSERT_TRUE(hasEnded(child));
    EXPECT_NO_THROW(Child::kill(child.getProcess().dwProcessId));
    EXPECT_EQ(waited(child).code, 8u);
}

TEST_F(ChildWait, KillOfNoProcessThrows) {
    EXPECT_THROW(Child::kill(0x7FFFFFF0), OsError);
}

TEST_F(ChildWait, WithoutAChildIsAnError) {
    const std::string message = "Usage error: tried to wait on non-existant child";
    Child child;
    EXPECT_EQ(thrown<UsageError>([&] { waited(child); }), message);
    prepare(child, {"exit", "0"});
    child.start();
    EXPECT_TRUE(waited(child).succeeded());
    EXPECT_EQ(thrown<UsageError>([&] { waited(child); }), message);
}

TEST_F(ChildWait, TimeOutOfZeroLooksOnceAndLeavesTheChildCollectable) {
    const NamedEvent end;
    Child child;
    prepare(child, {"wait", end.name, "5"});
    child.start();
    ExitStatus status = {1, true, true};
    const std::int64_t none = 0;
    child.wait(status, true, &none);
    EXPECT_FALSE(status.finished);
    EXPECT_FALSE(status.killed);
    EXPECT_EQ(status.code, 0u);
    EXPECT_NE(child.getProcess().dwProcessId, 0u);
    end.set();
    EXPECT_EQ(waited(child).code, 5u);
}

TEST_F(ChildWait, TimeOutOfZeroGivesAResultThatIsThere) {
    Child first;
    Child second;
    prepare(first, {"exit", "5"});
    first.start();
    ASSERT_TRUE(hasEnded(first));
    // The shepherd handles exits one by one: once it has the second it also has the first.
    prepare(second, {"exit", "0"});
    second.start();
    waited(second);
    EXPECT_EQ(waitedUpTo(first, 0).code, 5u);
}

TEST_F(ChildWait, NegativeTimeOutHasPassed) {
    const NamedEvent end;
    Child child;
    prepare(child, {"wait", end.name, "0"});
    child.start();
    EXPECT_FALSE(waitedUpTo(child, -1000).finished);
    end.set();
    waited(child);
}

TEST_F(ChildWait, TimeOutIsKept) {
    const NamedEvent end;
    Child child;
    prepare(child, {"wait", end.name, "0"});
    child.start();
    const vek::time::MonotonicClock begun(true);
    EXPECT_FALSE(waitedUpTo(child, 200).finished);
    const std::int64_t passed = vek::time::MonotonicClock(true) - begun;
    EXPECT_GE(passed, 199);
    EXPECT_LT(passed, 10000);
    end.set();
    EXPECT_TRUE(waitedUpTo(child, vek::test::limitMs).finished);
}

TEST_F(ChildWait, TimeOutCountsOnlyIfItIsAskedFor) {
    const std::int64_t none = 0;
    Child child;
    ExitStatus status;
    prepare(child, {"sleep", "100", "0"});
    child.start();
    child.wait(status, false, &none);
    EXPECT_TRUE(status.finished);
    child.start();
    child.wait(status, true, nullptr);
    EXPECT_TRUE(status.finished);
}

TEST_F(ChildWait, FailureAfterTheEndLeavesNoChild) {
    Child child;
    prepare(child, {"exit", "0"});
    child.start();
    ASSERT_TRUE(hasEnded(child));
    CloseHandle(child.getProcess().hThread);
    EXPECT_THROW(waited(child), OsError);
    EXPECT_EQ(child.getProcess().hProcess, INVALID_HANDLE_VALUE);
    EXPECT_THROW(waited(child), UsageError);
}

TEST_F(ChildWait, ChildThatOutlivedTheShepherdCannotBeWaitedFor) {
    Child first;
    const NamedEvent end;
    Child second;
    prepare(first, {"exit", "0"});
    prepare(second, {"wait", end.name, "0"});
    first.start();
    second.start();
    waited(first);
    // `stop` returns when a child exits.
    std::thread stopping(vek::proc::shutdownShepherd);
    end.set();
    stopping.join();
    EXPECT_THROW(waited(second), RuntimeError);
    EXPECT_EQ(second.getProcess().dwProcessId, 0u);
    // The next child gets a new shepherd.
    first.start();
    EXPECT_TRUE(waited(first).succeeded());
}

TEST_F(ChildWait, InterruptWithoutAConsoleThrows) {
    const NamedEvent end;
    Child child;
    prepare(child, {"wait", end.name, "0"});
    child.start();
    EXPECT_THROW(Child::interrupt(child.getProcess().dwProcessId), OsError);
    end.set();
    waited(child);
}

}  // namespace
