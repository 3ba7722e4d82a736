#include "vek/os/thread.h"

#include <gtest/gtest.h>

#include "tests/vek/os/test_support.h"

namespace {

using vek::os::endThread;
using vek::os::startThread;
using vek::os::startThreadOnce;
using vek::os::ThreadFlag;
using vek::os::waitThreadFlag;

// An upper bound for what takes milliseconds.
constexpr DWORD patienceMs = 30000;

class Elapsed {
  public:
    ULONGLONG milliseconds() const { return GetTickCount64() - start; }

  private:
    ULONGLONG start = GetTickCount64();
};

// What a thread of the tests works on.
struct Work {
    vek::test::OwnedHandle done{CreateEventA(nullptr, FALSE, FALSE, nullptr)};
    ThreadFlag flag = 0;
    std::atomic<int> calls = 0;
    DWORD threadId = 0;
    bool isDone() const { return WaitForSingleObject(done.get(), patienceMs) == WAIT_OBJECT_0; }
};

void countAndTell(void* argument) {
    auto* work = static_cast<Work*>(argument);
    ++work->calls;
    work->threadId = GetCurrentThreadId();
    SetEvent(work->done.get());
}

void countOnly(void* argument) {
    ++static_cast<Work*>(argument)->calls;
}

class TellsWhenDestroyed {
  public:
    explicit TellsWhenDestroyed(Work& toTell) : work(toTell) {}
    ~TellsWhenDestroyed() { ++work.calls; }
    TellsWhenDestroyed(const TellsWhenDestroyed&) = delete;
    TellsWhenDestroyed& operator=(const TellsWhenDestroyed&) = delete;

  private:
    Work& work;
};

void endInTheMiddle(void* argument) {
    auto* work = static_cast<Work*>(argument);
    const TellsWhenDestroyed object(*work);
    work->threadId = GetCurrentThreadId();
    SetEvent(work->done.get());
    endThread();
    ++work->calls;
}

// Runs until it is asked to stop, and shows its end.
void runUntilAsked(void* argument) {
    auto* work = static_cast<Work*>(argument);
    while (work->flag != vek::os::threadStopping) {
        Sleep(10);
    }
    ++work->calls;
    work->flag = vek::os::threadIdle;
    SetEvent(work->done.get());
}

TEST(StartThread, RunsTheFunctionOnAnotherThread) {
    Work work;
    std::uintptr_t id = 0;
    EXPECT_EQ(startThread(&id, countAndTell, 0, &work), 1);
    ASSERT_TRUE(work.isDone());
    EXPECT_EQ(work.calls, 1);
    EXPECT_NE(work.threadId, GetCurrentThreadId());
    EXPECT_NE(id, 0u);
    EXPECT_NE(id, static_cast<std::uintptr_t>(-1));
}

TEST(StartThread, IdIsStoredIfWanted) {
    Work work;
    EXPECT_EQ(startThread(nullptr, countAndTell, 100000, &work), 1);
    EXPECT_TRUE(work.isDone());
}

TEST(StartThread, StackThatCantBeHadIsAFailure) {
    Work work;
    std::uintptr_t id = 0;
    EXPECT_EQ(startThread(&id, countAndTell, 0xF0000000, &work), 0);
    EXPECT_EQ(id, static_cast<std::uintptr_t>(-1));
    EXPECT_EQ(work.calls, 0);
}

TEST(StartThread, NullFunctionIsAFailure) {
    std::uintptr_t id = 77;
    EXPECT_EQ(startThread(&id, nullptr, 0, nullptr), 0);
    EXPECT_EQ(id, 77u);
}

TEST(StartThreadOnce, StartsTheThreadOfAFlagOnce) {
    Work work;
    std::uintptr_t id = 0;
    EXPECT_EQ(startThreadOnce(&id, &work.flag, countAndTell, &work), 1);
    EXPECT_EQ(work.flag, 1);
    EXPECT_NE(id, 0u);
    ASSERT_TRUE(work.isDone());
    std::uintptr_t second = 77;
    for (const int value : {1, 3, -1}) {
        work.flag = value;
        EXPECT_EQ(startThreadOnce(&second, &work.flag, countAndTell, &work), 1);
        EXPECT_EQ(work.flag, value);
    }
    EXPECT_EQ(second, 77u);
    work.flag = 0;
    EXPECT_EQ(startThreadOnce(nullptr, &work.flag, countAndTell, &work), 1);
    ASSERT_TRUE(work.isDone());
    EXPECT_EQ(work.calls, 2);
}

TEST(StartThreadOnce, FailureClearsTheFlag) {
    ThreadFlag flag = 0;
    EXPECT_EQ(startThreadOnce(nullptr, &flag, nullptr, nullptr), 0);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(startThreadOnce(nullptr, nullptr, countOnly, nullptr), 0);
}

TEST(EndThread, EndsTheThreadWithoutRunningDestructors) {
    Work work;
    std::uintptr_t id = 0;
    ASSERT_EQ(startThread(&id, endInTheMiddle, 0, &work), 1);
    ASSERT_TRUE(work.isDone());
    const vek::test::OwnedHandle thread(OpenThread(SYNCHRONIZE, FALSE, work.threadId));
    if (thread.get() != nullptr) {
        EXPECT_EQ(WaitForSingleObject(thread.get(), patienceMs), WAIT_OBJECT_0);
    }
    EXPECT_EQ(work.calls, 0);
}

TEST(WaitThreadFlag, ThreadThatDoesNotRunNeedsNoStop) {
    Work work;
    EXPECT_EQ(waitThreadFlag(0, &work.flag, 1, countOnly, &work), 1);
    EXPECT_EQ(work.flag, 0);
    EXPECT_EQ(work.calls, 0);
}

TEST(WaitThreadFlag, AsksTheThreadToEndAndWaitsForIt) {
    Work work;
    std::uintptr_t id = 0;
    ASSERT_EQ(startThreadOnce(&id, &work.flag, runUntilAsked, &work), 1);
    EXPECT_EQ(waitThreadFlag(id, &work.flag, 0, nullptr, nullptr), 1);
    EXPECT_EQ(work.flag, 0);
    EXPECT_EQ(work.calls, 1);
    EXPECT_TRUE(work.isDone());
}

TEST(WaitThreadFlag, CallsStopOnceWithTheFlagAt3) {
    Work work;
    work.flag = 7;
    const auto stop = [](void* argument) {
        auto* stopped = static_cast<Work*>(argument);
        EXPECT_EQ(stopped->flag, 3);
        ++stopped->calls;
        stopped->flag = 5;
    };
    const Elapsed elapsed;
    EXPECT_EQ(waitThreadFlag(0, &work.flag, 100, stop, &work), 1);
    EXPECT_LT(elapsed.milliseconds(), 5000u);
    EXPECT_EQ(work.calls, 1);
    // Any value but 3 is the end.
    EXPECT_EQ(work.flag, 5);
}

TEST(WaitThreadFlag, GivesUpAfterItsRounds) {
    Work work;
    work.flag = 1;
    const Elapsed elapsed;
    EXPECT_EQ(waitThreadFlag(0, &work.flag, 3, countOnly, &work), 0);
    EXPECT_GE(elapsed.milliseconds(), 280u);
    EXPECT_EQ(work.flag, 3);
    EXPECT_EQ(work.calls, 1);
}

TEST(WaitThreadFlag, NoRoundsMeanNearlyNoEnd) {
    Work work;
    work.flag = 1;
    const auto clearLater = [](void* argument) {
        Sleep(400);
        static_cast<Work*>(argument)->flag = 0;
        SetEvent(static_cast<Work*>(argument)->done.get());
    };
    ASSERT_EQ(startThread(nullptr, clearLater, 0, &work), 1);
    EXPECT_EQ(waitThreadFlag(0, &work.flag, 0, countOnly, &work), 1);
    EXPECT_TRUE(work.isDone());
    EXPECT_EQ(work.calls, 1);
}

TEST(WaitThreadFlag, NullFlagGivesZero) {
    Work work;
    EXPECT_EQ(waitThreadFlag(0, nullptr, 1, countOnly, &work), 0);
    EXPECT_EQ(work.calls, 0);
}

}  // namespace
