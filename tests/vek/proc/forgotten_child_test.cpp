// Children whose handles are closed though nobody has collected them.
#include <array>
#include <atomic>
#include <thread>

#include "tests/support/files.h"
#include "tests/support/replaced_import.h"
#include "tests/vek/proc/proc_test.h"
#include "vek/proc/shepherd.h"
#include "vek/thread/scope_guard.h"

namespace {

using vek::OsError;
using vek::UsageError;
using vek::proc::Child;
using vek::proc::currentShepherd;
using vek::test::NamedEvent;

class ForgottenChild : public vek::test::ProcTest {
  protected:
    static void startWaiting(Child& child, const NamedEvent& event, const std::string& code) {
        prepare(child, {"wait", event.name, code});
        child.start();
    }

    // Waits for `child` while this thread holds the shepherd's lock, and returns the code of the
    // OsError.
    static std::uint32_t waitWithTheLockHeld(Child& child) {
        const vek::thread::ScopeGuard guard(currentShepherd()->getLock());
        try {
            waited(child);
        } catch (const OsError& error) {
            return error.code();
        }
        return 0;
    }
};

TEST_F(ForgottenChild, WaitWithTheShepherdsLockHeldThrows1131AndLeavesItHeldOnce) {
    const NamedEvent end;
    Child child;
    Child other;
    startWaiting(child, end, "3");
    startWaiting(other, end, "4");
    EXPECT_EQ(waitWithTheLockHeld(child), 1131u);
    EXPECT_FALSE(currentShepherd()->getLock().getMutex().isHeldByCaller());
    EXPECT_EQ(child.getProcess().dwProcessId, 0u);
    EXPECT_THROW(waited(child), UsageError);
    end.set();
    // The shepherd goes on.
    EXPECT_EQ(waited(other).code, 4u);
}

TEST_F(ForgottenChild, WaitForChildWithTheLockHeldThrows1131AndKeepsTheChild) {
    const NamedEvent end;
    Child child;
    startWaiting(child, end, "3");
    {
        const vek::thread::ScopeGuard guard(currentShepherd()->getLock());
        std::uint32_t code = 0;
        EXPECT_THROW(currentShepherd()->waitForChild(child.getProcess(), code, nullptr), OsError);
    }
    end.set();
    EXPECT_EQ(waited(child).code, 3u);
}

TEST_F(ForgottenChild, StartWithTheLockHeldThrows1131AndCreatesNothing) {
    vek::proc::ensureShepherd();
    Child child;
    prepare(child, {"exit", "0"});
    {
        const vek::thread::ScopeGuard guard(currentShepherd()->getLock());
        EXPECT_THROW(child.start(), OsError);
    }
    EXPECT_EQ(child.getProcess().dwProcessId, 0u);
    child.start();
    EXPECT_TRUE(waited(child).succeeded());
}

TEST_F(ForgottenChild, IsNotWatchedAnyMoreAndNothingIsReported) {
    const NamedEvent end;
    const NamedEvent endOfOther;
    Child child;
    Child other;
    startWaiting(child, end, "3");
    startWaiting(other, endOfOther, "4");
    testing::internal::CaptureStderr();
    EXPECT_EQ(waitWithTheLockHeld(child), 1131u);
    // Starting a child makes the shepherd wait on all handles anew.
    Child third;
    prepare(third, {"exit", "5"});
    third.start();
    EXPECT_EQ(waited(third).code, 5u);
    end.set();
    endOfOther.set();
    EXPECT_EQ(waited(other).code, 4u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ForgottenChild, IsNotTakenForALaterOneWithTheSameHandle) {
    const NamedEvent endOfAll;
    const NamedEvent endOfOther;
    Child other;
    startWaiting(other, endOfOther, "4");
    int sameHandle = 0;
    for (int i = 0; i < 20; ++i) {
        const NamedEvent end;
        const NamedEvent endOfLater;
        Child child;
        startWaiting(child, end, "3");
        const HANDLE handle = child.getProcess().hProcess;
        // The exit is noticed, is about to be noticed, or hasn't happened yet.
        if (i % 3 != 0) {
            end.set();
        }
        if (i % 3 == 2) {
            ASSERT_TRUE(hasEnded(child));
        }
        EXPECT_EQ(waitWithTheLockHeld(child), 1131u);
        Child later;
        startWaiting(later, endOfLater, "7");
        sameHandle += later.getProcess().hProcess == handle ? 1 : 0;
        end.set();
        EXPECT_FALSE(waitedUpTo(later, 20).finished);
        endOfLater.set();
        EXPECT_EQ(waited(later).code, 7u);
    }
    // Windows reuses handle values, and so does Wine: otherwise this test proves nothing.
    EXPECT_GT(sameHandle, 0);
    endOfOther.set();
    EXPECT_EQ(waited(other).code, 4u);
}

TEST_F(ForgottenChild, CallbackIsNotCalledAlsoNotForALaterChildWithTheSameHandle) {
    struct Callback final : vek::proc::IChildCallback {
        void childExited(Child&) override { ++calls; }
        std::atomic<int> calls = 0;
    } callback;
    std::array<Child, 20> forgotten;
    int sameHandle = 0;
    for (Child& child : forgotten) {
        const NamedEvent end;
        child.setNotifyCallback(&callback);
        startWaiting(child, end, "3");
        const HANDLE handle = child.getProcess().hProcess;
        EXPECT_EQ(waitWithTheLockHeld(child), 1131u);
        Child later;
        prepare(later, {"exit", "7"});
        later.start();
        sameHandle += later.getProcess().hProcess == handle ? 1 : 0;
        EXPECT_EQ(waited(later).code, 7u);
    }
    EXPECT_GT(sameHandle, 0);
    // A call would be over before the next exit is noticed.
    Child last;
    prepare(last, {"exit", "8"});
    last.start();
    EXPECT_EQ(waited(last).code, 8u);
    EXPECT_EQ(callback.calls, 0);
}

std::atomic<bool> delaysWaits = false;
std::atomic<bool> isDelayed = false;

DWORD WINAPI waitLater(DWORD count, const HANDLE* handles, BOOL all, DWORD timeoutMs) {
    // On two children and the shepherd's event.
    if (delaysWaits && count == 3) {
        isDelayed = true;
        Sleep(300);
    }
    return WaitForMultipleObjectsEx(count, handles, all, timeoutMs, FALSE);
}

TEST_F(ForgottenChild, HandleStaysOpenUntilTheShepherdHasLeftItsWait) {
    const support::ReplacedImport<decltype(&WaitForMultipleObjects)> replaced(
        "WaitForMultipleObjects", waitLater);
    const NamedEvent end;
    const NamedEvent endOfOther;
    Child child;
    Child other;
    startWaiting(other, endOfOther, "4");
    testing::internal::CaptureStderr();
    delaysWaits = true;
    startWaiting(child, end, "3");
    // The shepherd has copied the handles, and the system doesn't wait on them yet.
    EXPECT_TRUE(support::waitUntil([] { return isDelayed.load(); }, vek::test::limitMs));
    EXPECT_EQ(waitWithTheLockHeld(child), 1131u);
    delaysWaits = false;
    end.set();
    endOfOther.set();
    EXPECT_EQ(waited(other).code, 4u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ForgottenChild, ManyThreadsForgetAndStartAtOnce) {
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    testing::internal::CaptureStderr();
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&wrong, i] {
            const std::string code = std::to_string(10 + i);
            for (int round = 0; round < 15; ++round) {
                const NamedEvent end;
                Child forgotten;
                Child kept;
                startWaiting(forgotten, end, "99");
                startWaiting(kept, end, code);
                end.set();
                wrong += waitWithTheLockHeld(forgotten) == 1131u ? 0 : 1;
                wrong += std::to_string(waited(kept).code) == code ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
