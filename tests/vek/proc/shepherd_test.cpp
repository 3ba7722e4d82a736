#include "vek/proc/shepherd.h"

#include <atomic>
#include <thread>

#include "tests/support/files.h"
#include "tests/support/open_handles.h"
#include "tests/vek/proc/proc_test.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock.h"

namespace {

using vek::OsError;
using vek::RuntimeError;
using vek::proc::Child;
using vek::proc::currentShepherd;
using vek::proc::ExitStatus;
using vek::proc::Shepherd;
using vek::test::NamedEvent;

class ShepherdTest : public vek::test::ProcTest {
  protected:
    static void startWaiting(Child& child, const NamedEvent& event, const std::string& code) {
        prepare(child, {"wait", event.name, code});
        child.start();
    }

    static void startEnding(Child& child, const std::string& code) {
        prepare(child, {"exit", code});
        child.start();
    }

    // Returns false if no result of `process` arrives within `timeoutMs` milliseconds.
    static bool comes(const PROCESS_INFORMATION& process, std::uint32_t& code,
                      std::int64_t timeoutMs) {
        return currentShepherd()->waitForChild(process, code, &timeoutMs);
    }

    // A duplicate of the child's process handle with only the access right `access`.
    static PROCESS_INFORMATION withAccess(const Child& child, DWORD access) {
        PROCESS_INFORMATION limited = {};
        EXPECT_NE(DuplicateHandle(GetCurrentProcess(), child.getProcess().hProcess,
                                  GetCurrentProcess(), &limited.hProcess, access, FALSE, 0),
                  0);
        return limited;
    }

    static void watch(const PROCESS_INFORMATION& process) {
        const vek::thread::ScopeGuard guard(currentShepherd()->getLock());
        currentShepherd()->addChild(process, nullptr);
    }
};

// Start and stop.

TEST_F(ShepherdTest, ComesWithTheFirstChildAndStays) {
    EXPECT_EQ(currentShepherd(), nullptr);
    const std::uint32_t before = vek::thread::Thread::liveCount();
    Child child;
    startEnding(child, "0");
    const Shepherd* const first = currentShepherd();
    ASSERT_NE(first, nullptr);
    waited(child);
    startEnding(child, "0");
    waited(child);
    EXPECT_EQ(currentShepherd(), first);
    EXPECT_EQ(vek::thread::Thread::liveCount(), before + 1);
}

TEST_F(ShepherdTest, StartedByManyThreadsAtOnceIsOne) {
    const std::uint32_t before = vek::thread::Thread::liveCount();
    std::vector<std::thread> threads;
    std::atomic<Shepherd*> seen[8] = {};
    for (auto& place : seen) {
        threads.emplace_back([&place] {
            vek::proc::ensureShepherd();
            place = currentShepherd();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& place : seen) {
        EXPECT_EQ(place, currentShepherd());
    }
    EXPECT_TRUE(
        support::waitUntil([&] { return vek::thread::Thread::liveCount() == before + 1; }, 10000));
}

TEST_F(ShepherdTest, ShutDownDeletesItAndLeavesNothingOpen) {
    vek::proc::ensureShepherd();
    vek::proc::shutdownShepherd();
    const std::size_t before = support::openHandles().size();
    for (int i = 0; i < 100; ++i) {
        vek::proc::ensureShepherd();
        EXPECT_NE(currentShepherd(), nullptr);
        vek::proc::shutdownShepherd();
        EXPECT_EQ(currentShepherd(), nullptr);
    }
    EXPECT_NO_THROW(vek::proc::shutdownShepherd());
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST_F(ShepherdTest, StopWithoutChildrenReturnsAtOnce) {
    Child child;
    startEnding(child, "0");
    waited(child);
    // Long enough that the thread sleeps.
    Sleep(50);
    const vek::time::MonotonicClock begun(true);
    vek::proc::shutdownShepherd();
    EXPECT_LT(vek::time::MonotonicClock(true) - begun, 2000);
}

TEST_F(ShepherdTest, StopWithARunningChildLastsUntilItsEnd) {
    const NamedEvent end;
    Child child;
    startWaiting(child, end, "0");
    // Long enough that the thread waits for the child.
    Sleep(500);
    std::atomic<bool> stopped = false;
    std::thread stopping([&] {
        vek::proc::shutdownShepherd();
        stopped = true;
    });
    Sleep(300);
    EXPECT_FALSE(stopped);
    EXPECT_FALSE(hasEnded(child, 0));
    end.set();
    stopping.join();
    EXPECT_TRUE(hasEnded(child, 0));
    EXPECT_THROW(waited(child), RuntimeError);
}

TEST_F(ShepherdTest, StopWithSeveralRunningChildrenLastsUntilTheFirstEnd) {
    const NamedEvent endOfFirst;
    const NamedEvent endOfSecond;
    Child first;
    Child second;
    startWaiting(first, endOfFirst, "0");
    startWaiting(second, endOfSecond, "0");
    // Long enough that the thread waits for both.
    Sleep(500);
    std::thread stopping(vek::proc::shutdownShepherd);
    Sleep(100);
    EXPECT_NE(currentShepherd(), nullptr);
    endOfSecond.set();
    stopping.join();
    EXPECT_FALSE(hasEnded(first, 0));
    endOfFirst.set();
    EXPECT_TRUE(hasEnded(first));
    EXPECT_THROW(waited(first), RuntimeError);
    EXPECT_THROW(waited(second), RuntimeError);
}

TEST_F(ShepherdTest, StopThatFailsIsReported) {
    Shepherd shepherd;
    testing::internal::CaptureStderr();
    shepherd.stop();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error joining shepherd thread:\n"
              "Usage error: Trying to terminate an inactive thread.\n\n");
}

TEST_F(ShepherdTest, LockedTwiceByOneThreadThrows1131) {
    vek::proc::ensureShepherd();
    vek::thread::Mutex& mutex = currentShepherd()->getLock().getMutex();
    mutex.lock();
    EXPECT_THROW(mutex.lock(), OsError);
    mutex.unlock();
    mutex.unlock();
}

// Results.

TEST_F(ShepherdTest, ResultOfAChildThatHasEndedIsKept) {
    Child child;
    Child later;
    startEnding(child, "3");
    startEnding(later, "4");
    EXPECT_EQ(waited(later).code, 4u);
    ASSERT_TRUE(hasEnded(child));
    EXPECT_EQ(waited(child).code, 3u);
}

TEST_F(ShepherdTest, ResultIsHandedOutOnce) {
    Child child;
    startEnding(child, "3");
    const PROCESS_INFORMATION process = child.getProcess();
    std::uint32_t code = 0;
    EXPECT_TRUE(comes(process, code, vek::test::limitMs));
    EXPECT_EQ(code, 3u);
    EXPECT_FALSE(comes(process, code, 0));
    EXPECT_FALSE(comes(process, code, 50));
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

TEST_F(ShepherdTest, TwoWaitersForOneChildGetOneResult) {
    const NamedEvent end;
    Child child;
    startWaiting(child, end, "3");
    const PROCESS_INFORMATION process = child.getProcess();
    std::atomic<int> results = 0;
    // The one without a result waits for a little longer than the other.
    const auto waiter = [&] {
        std::uint32_t code = 0;
        for (int i = 0; i < 100 && results == 0; ++i) {
            results += comes(process, code, 500) ? 1 : 0;
        }
    };
    std::thread first(waiter);
    std::thread second(waiter);
    end.set();
    first.join();
    second.join();
    EXPECT_EQ(results, 1);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

TEST_F(ShepherdTest, TwoThreadsThatWaitForTwoChildrenGetEachItsOwnCode) {
    const NamedEvent endOfFirst;
    const NamedEvent endOfSecond;
    Child first;
    Child second;
    startWaiting(first, endOfFirst, "11");
    startWaiting(second, endOfSecond, "12");
    ExitStatus ofFirst;
    ExitStatus ofSecond;
    std::thread firstWaiter([&] { first.wait(ofFirst); });
    std::thread secondWaiter([&] { second.wait(ofSecond); });
    // Both sleep; a result must wake both.
    Sleep(50);
    endOfSecond.set();
    secondWaiter.join();
    endOfFirst.set();
    firstWaiter.join();
    EXPECT_EQ(ofFirst.code, 11u);
    EXPECT_EQ(ofSecond.code, 12u);
}

TEST_F(ShepherdTest, ChildThatJoinsARunningOneIsSeenAtOnce) {
    const NamedEvent never;
    Child running;
    startWaiting(running, never, "0");
    // The thread waits for the first child only; the second has to interrupt that wait.
    Sleep(50);
    Child second;
    startEnding(second, "2");
    EXPECT_EQ(waitedUpTo(second, vek::test::limitMs).code, 2u);
    never.set();
    waited(running);
}

TEST_F(ShepherdTest, ChildOfAnIdleShepherdIsSeenAtOnce) {
    vek::proc::ensureShepherd();
    Sleep(50);
    Child child;
    startEnding(child, "2");
    EXPECT_EQ(waitedUpTo(child, vek::test::limitMs).code, 2u);
}

// Failing system calls.

TEST_F(ShepherdTest, CodeThatCannotBeReadIsReportedAndAResultIsThere) {
    Child child;
    startEnding(child, "0");
    const PROCESS_INFORMATION blind = withAccess(child, SYNCHRONIZE);
    testing::internal::CaptureStderr();
    watch(blind);
    std::uint32_t code = 0;
    const bool came = comes(blind, code, vek::test::limitMs);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "shepherd: Failed to get exit code!\n");
    EXPECT_TRUE(came);
    EXPECT_NE(code, 0u);
    CloseHandle(blind.hProcess);
    EXPECT_TRUE(waited(child).succeeded());
}

TEST_F(ShepherdTest, WaitThatKeepsFailingKeepsReportingAndCanBeStopped) {
    vek::proc::ensureShepherd();
    const NamedEvent end;
    Child child;
    startWaiting(child, end, "0");
    const PROCESS_INFORMATION deaf = withAccess(child, PROCESS_QUERY_INFORMATION);
    testing::internal::CaptureStderr();
    watch(deaf);
    Sleep(100);
    vek::proc::shutdownShepherd();
    const std::string line = "shepherd: Error waiting for multiple objects!\n";
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(report.substr(0, 2 * line.size()), line + line);
    EXPECT_EQ(report.size() % line.size(), 0u);
    end.set();
    EXPECT_TRUE(hasEnded(child));
    EXPECT_THROW(waited(child), RuntimeError);
    CloseHandle(deaf.hProcess);
}

}  // namespace
