#include "vek/thread/thread.h"

#include <functional>
#include <locale>

#include "tests/vek/thread/lock_support.h"
#include "vek/base/os_error_text.h"

namespace {

using namespace vek::thread;
using vek::UsageError;
using vek_test::becomesTrue;
using vek_test::LookedUpIn;
using vek_test::nativeLibrary;
using vek_test::Signal;
using vek_test::textOf;

class Body : public Runnable {
  public:
    explicit Body(std::function<void()> toDo) : work(std::move(toDo)) {}
    void run() override { work(); }

  private:
    std::function<void()> work;
};

// A thread that runs a function, with both made together.
struct Worker {
    Body body;
    Thread thread;

    explicit Worker(std::function<void(Thread&)> work, const std::string& name = "worker")
        : body([this, work] { work(thread); }), thread(name, body) {}

    bool sleeps() {
        return becomesTrue([this] { return thread.getState() == Thread::WAITING; });
    }
};

class Threads : public testing::Test {
  protected:
    const LookedUpIn lookedUp{nativeLibrary, nativeLibrary};
};

// --- running ---

TEST_F(Threads, RunTheirTargetOnAThreadOfItsOwn) {
    std::uint32_t ran = 0;
    Worker worker([&](Thread&) { ran = Thread::currentId(); });
    worker.thread.start();
    worker.thread.join();
    EXPECT_NE(ran, 0u);
    EXPECT_NE(ran, Thread::currentId());
}

TEST_F(Threads, RunAnOverriddenBody) {
    class Derived : public Thread {
      public:
        Derived() : Thread("derived") {}
        void run() override { hasRun = true; }
        std::atomic<bool> hasRun = false;
    };
    Derived derived;
    derived.start();
    derived.join();
    EXPECT_TRUE(derived.hasRun);
}

TEST_F(Threads, WithoutABodyEndAtOnce) {
    class Empty : public Thread {
      public:
        Empty() : Thread("") {}
    };
    Empty empty;
    empty.start();
    empty.join();
    EXPECT_EQ(empty.getState(), Thread::ENDED);
}

TEST_F(Threads, DoNotRunBeforeTheyAreStarted) {
    bool ran = false;
    {
        Worker worker([&](Thread&) { ran = true; });
        EXPECT_EQ(worker.thread.getState(), Thread::CREATED);
        EXPECT_EQ(worker.thread.getId(), 0u);
    }
    EXPECT_FALSE(ran);
}

TEST_F(Threads, HaveAnIdFromStartToJoin) {
    std::uint32_t seenInside = 0;
    std::uint32_t own = 0;
    Worker worker([&](Thread& thread) {
        seenInside = thread.getId();
        own = Thread::currentId();
    });
    worker.thread.start();
    const std::uint32_t id = worker.thread.getId();
    worker.thread.join();
    EXPECT_EQ(worker.thread.getId(), 0u);
    EXPECT_EQ(seenInside, own);
    EXPECT_EQ(id, own);
    EXPECT_EQ(Thread::currentId(), GetCurrentThreadId());
}

TEST_F(Threads, CanBeStartedAnewOnceJoined) {
    std::atomic<int> runs = 0;
    Worker worker([&](Thread& thread) {
        EXPECT_EQ(thread.getState(), Thread::RUNNING);
        ++runs;
        EXPECT_FALSE(thread.wait());
    });
    for (int round = 1; round <= 3; ++round) {
        worker.thread.start();
        ASSERT_TRUE(worker.sleeps());
        worker.thread.terminate();
        worker.thread.join();
        EXPECT_EQ(runs, round);
        EXPECT_EQ(worker.thread.getState(), Thread::ENDED);
    }
}

TEST_F(Threads, AreCountedWhileTheirBodiesRun) {
    const std::uint32_t before = Thread::liveCount();
    Signal inside;
    Worker first([](Thread& thread) { thread.wait(); });
    Worker second([&](Thread& thread) {
        inside.set();
        thread.wait();
    });
    EXPECT_EQ(Thread::liveCount(), before);
    first.thread.start();
    second.thread.start();
    ASSERT_TRUE(first.sleeps());
    ASSERT_TRUE(inside.wait());
    EXPECT_EQ(Thread::liveCount(), before + 2);
    first.thread.terminate();
    first.thread.join();
    EXPECT_EQ(Thread::liveCount(), before + 1);
    second.thread.terminate();
    second.thread.join();
    EXPECT_EQ(Thread::liveCount(), before);
}

TEST_F(Threads, MayWaitBeforeStartHasReturned) {
    for (int round = 0; round < 500; ++round) {
        std::string refused;
        bool result = false;
        Worker worker([&](Thread& thread) {
            refused = textOf<UsageError>([&] { result = thread.wait(0); });
        });
        worker.thread.start();
        worker.thread.join();
        ASSERT_EQ(refused, "(nothing was thrown)");
        ASSERT_TRUE(result);
    }
}

// --- misuse ---

TEST_F(Threads, SecondStartIsRefused) {
    Worker worker([](Thread& thread) { thread.wait(); });
    worker.thread.start();
    const std::uint32_t id = worker.thread.getId();
    EXPECT_EQ(textOf<UsageError>([&] { worker.thread.start(); }),
              "Usage error: The thread has already been started.");
    EXPECT_EQ(worker.thread.getId(), id);
    worker.thread.terminate();
    worker.thread.join();
}

TEST_F(Threads, StartIsRefusedAlsoBetweenTheEndAndTheJoin) {
    Worker worker([](Thread&) {});
    worker.thread.start();
    ASSERT_TRUE(becomesTrue([&] { return worker.thread.getState() == Thread::ENDED; }));
    EXPECT_THROW(worker.thread.start(), UsageError);
    EXPECT_EQ(worker.thread.getState(), Thread::ENDED);
    worker.thread.join();
}

void expectInactive(Thread& thread) {
    EXPECT_EQ(textOf<UsageError>([&] { thread.join(); }),
              "Usage error: Trying to join an inactive thread.");
    EXPECT_EQ(textOf<UsageError>([&] { thread.terminate(); }),
              "Usage error: Trying to terminate an inactive thread.");
    EXPECT_EQ(textOf<UsageError>([&] { thread.wakeup(); }),
              "Usage error: Trying to wakeup an inactive thread.");
}

TEST_F(Threads, InactiveOnesCannotBeJoinedTerminatedOrWoken) {
    Worker worker([](Thread&) {});
    expectInactive(worker.thread);
    EXPECT_EQ(worker.thread.getState(), Thread::CREATED);
    worker.thread.start();
    worker.thread.join();
    expectInactive(worker.thread);
}

TEST_F(Threads, OnlyTheWorkerCanWait) {
    Worker worker([](Thread& thread) { thread.wait(); });
    const auto expectRefused = [&worker] {
        EXPECT_EQ(textOf<UsageError>([&] { worker.thread.wait(); }),
                  "Usage error: Only the worker thread itself can wait");
        EXPECT_EQ(textOf<UsageError>([&] { worker.thread.wait(10); }),
                  "Usage error: Only the worker thread itself wait");
    };
    expectRefused();
    worker.thread.start();
    expectRefused();
    worker.thread.terminate();
    worker.thread.join();
    expectRefused();
}

// --- sleeping, waking, terminating ---

TEST_F(Threads, WakeupWakesASleepingWorkerWhoseWaitGivesTrue) {
    std::vector<bool> results;
    Worker worker([&](Thread& thread) {
        results.push_back(thread.wait());
        results.push_back(thread.getState() == Thread::RUNNING);
        results.push_back(thread.wait(60000));
        results.push_back(thread.wait());
    });
    worker.thread.start();
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(worker.sleeps());
        EXPECT_TRUE(worker.thread.wakeup());
    }
    ASSERT_TRUE(worker.sleeps());
    worker.thread.terminate();
    worker.thread.join();
    EXPECT_EQ(results, (std::vector<bool>{true, true, true, false}));
}

TEST_F(Threads, WakeupOfAWorkerThatIsAwakeIsFalseAndLost) {
    Signal inside;
    Signal goOn;
    bool woken = false;
    Worker worker([&](Thread& thread) {
        inside.set();
        EXPECT_TRUE(goOn.wait());
        woken = thread.wait();
    });
    worker.thread.start();
    ASSERT_TRUE(inside.wait());
    EXPECT_FALSE(worker.thread.wakeup());
    EXPECT_EQ(worker.thread.getState(), Thread::RUNNING);
    goOn.set();
    // It sleeps all the same.
    ASSERT_TRUE(worker.sleeps());
    EXPECT_TRUE(worker.thread.wakeup());
    worker.thread.join();
    EXPECT_TRUE(woken);
}

TEST_F(Threads, WakeupOfAnEndedWorkerIsFalse) {
    Worker worker([](Thread&) {});
    worker.thread.start();
    ASSERT_TRUE(becomesTrue([&] { return worker.thread.getState() == Thread::ENDED; }));
    EXPECT_FALSE(worker.thread.wakeup());
    EXPECT_EQ(worker.thread.getState(), Thread::ENDED);
    worker.thread.join();
}

TEST_F(Threads, TimeOutOfAWaitGivesTrueAndTheWorkerRuns) {
    bool result = false;
    Thread::State state = Thread::CREATED;
    vek::time::MonotonicClock start(false);
    vek::time::MonotonicClock end(false);
    Worker worker([&](Thread& thread) {
        start.refresh();
        result = thread.wait(50);
        end.refresh();
        state = thread.getState();
    });
    worker.thread.start();
    worker.thread.join();
    EXPECT_TRUE(result);
    EXPECT_EQ(state, Thread::RUNNING);
    EXPECT_GE(end - start, 45);
}

TEST_F(Threads, WaitForNoTimeOrLessGivesTrueAtOnce) {
    std::vector<bool> results;
    Worker worker([&](Thread& thread) {
        results.push_back(thread.wait(0));
        results.push_back(thread.wait(-1));
        results.push_back(thread.wait(std::numeric_limits<std::int64_t>::min() / 2));
    });
    worker.thread.start();
    worker.thread.join();
    EXPECT_EQ(results, (std::vector<bool>{true, true, true}));
}

TEST_F(Threads, TerminateEndsASleepWithFalse) {
    for (const bool withLimit : {false, true}) {
        bool result = true;
        Worker worker(
            [&](Thread& thread) { result = withLimit ? thread.wait(60000) : thread.wait(); });
        worker.thread.start();
        ASSERT_TRUE(worker.sleeps());
        worker.thread.terminate();
        worker.thread.join();
        EXPECT_FALSE(result);
    }
}

TEST_F(Threads, WaitAfterTerminateIsFalseWithoutASleep) {
    Signal inside;
    Signal goOn;
    std::vector<bool> results;
    Thread::State state = Thread::CREATED;
    Worker worker([&](Thread& thread) {
        inside.set();
        EXPECT_TRUE(goOn.wait());
        results.push_back(thread.wait());
        results.push_back(thread.wait(60000));
        results.push_back(thread.wait());
        state = thread.getState();
    });
    worker.thread.start();
    ASSERT_TRUE(inside.wait());
    worker.thread.terminate();
    EXPECT_EQ(worker.thread.getState(), Thread::TERMINATING);
    EXPECT_FALSE(worker.thread.wakeup());
    worker.thread.terminate();
    EXPECT_EQ(worker.thread.getState(), Thread::TERMINATING);
    goOn.set();
    worker.thread.join();
    EXPECT_EQ(results, (std::vector<bool>{false, false, false}));
    EXPECT_EQ(state, Thread::TERMINATING);
    EXPECT_EQ(worker.thread.getState(), Thread::ENDED);
}

TEST_F(Threads, TerminateOfAnEndedWorkerChangesNothing) {
    Worker worker([](Thread&) {});
    worker.thread.start();
    ASSERT_TRUE(becomesTrue([&] { return worker.thread.getState() == Thread::ENDED; }));
    worker.thread.terminate();
    EXPECT_EQ(worker.thread.getState(), Thread::ENDED);
    worker.thread.join();
}

TEST_F(Threads, EachWakeupThatIsTrueEndsOneSleep) {
    constexpr int rounds = 3000;
    std::atomic<int> wokenUp = 0;
    Worker worker([&](Thread& thread) {
        while (thread.wait()) {
            ++wokenUp;
        }
    });
    worker.thread.start();
    for (int accepted = 0; accepted < rounds;) {
        if (worker.thread.wakeup()) {
            ++accepted;
        } else {
            std::this_thread::yield();
        }
    }
    // The last one may still be on its way.
    ASSERT_TRUE(worker.sleeps());
    worker.thread.terminate();
    worker.thread.join();
    EXPECT_EQ(wokenUp, rounds);
}

TEST_F(Threads, StopAtAnyMoment) {
    for (int round = 0; round < 500; ++round) {
        Worker worker([](Thread& thread) {
            while (thread.wait()) {
            }
        });
        worker.thread.start();
        if (round % 2 == 0) {
            worker.thread.wakeup();
        }
        worker.thread.terminate();
        worker.thread.join();
        ASSERT_EQ(worker.thread.getState(), Thread::ENDED);
    }
}

// --- bodies that throw ---

// Runs a thread called `name` and gives what it wrote to std::cerr, with its id replaced by "ID".
std::string reportOf(const std::string& name, std::function<void()> work) {
    Worker worker([work](Thread&) { work(); }, name);
    testing::internal::CaptureStderr();
    worker.thread.start();
    const std::string id = "(" + std::to_string(worker.thread.getId()) + ")";
    worker.thread.join();
    std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(worker.thread.getState(), Thread::ENDED);
    const std::size_t at = report.find(id);
    return at == std::string::npos ? report : report.replace(at, id.size(), "(ID)");
}

TEST_F(Threads, DyingOfAVekExceptionReportItsWholeText) {
    EXPECT_EQ(
        reportOf("log-manager", [] { throw vek::RuntimeError("top", vek::RuntimeError("cause")); }),
        "Thread log-manager (ID) died with VEK exception:top\ncause\n\n");
}

TEST_F(Threads, DyingOfAStdExceptionReportIt) {
    EXPECT_EQ(reportOf("a b", [] { throw std::runtime_error("why"); }),
              "Thread a b (ID) died with std::exception: why\n");
}

TEST_F(Threads, DyingOfSomethingElseReportItWithoutALineEnd) {
    EXPECT_EQ(reportOf("", [] { throw 42; }), "Thread  (ID) died with an unknown exception");
}

// A number format that separates every digit.
class Grouping : public std::numpunct<char> {
  protected:
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\1"; }
};

TEST_F(Threads, DyingReportTheIdInPlainDecimalWhateverTheGlobalLocale) {
    const std::locale former = std::locale::global(std::locale(std::locale(), new Grouping));
    const std::string report = reportOf("a", [] { throw std::runtime_error("why"); });
    const std::string ofUnknown = reportOf("b", [] { throw 42; });
    const std::string ofException = reportOf("c", [] { throw vek::RuntimeError("text"); });
    std::locale::global(former);
    EXPECT_EQ(report, "Thread a (ID) died with std::exception: why\n");
    EXPECT_EQ(ofUnknown, "Thread b (ID) died with an unknown exception");
    EXPECT_EQ(ofException, "Thread c (ID) died with VEK exception:text\n\n");
}

TEST_F(Threads, EndingWellReportNothing) {
    EXPECT_EQ(reportOf("quiet", [] {}), "");
}

TEST_F(Threads, DyingCountNoMoreAndCanBeStartedAnew) {
    const std::uint32_t before = Thread::liveCount();
    int runs = 0;
    Worker worker([&](Thread&) {
        ++runs;
        throw 42;
    });
    testing::internal::CaptureStderr();
    for (int i = 0; i < 2; ++i) {
        worker.thread.start();
        worker.thread.join();
        EXPECT_EQ(Thread::liveCount(), before);
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(runs, 2);
}

// --- names ---

constexpr DWORD nameThreadException = 0x406D1388;

LONG CALLBACK endProcessAtANaming(EXCEPTION_POINTERS* raised) {
    if (raised->ExceptionRecord->ExceptionCode == nameThreadException) {
        ExitProcess(77);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

TEST_F(Threads, NamedOnesRunWithoutADebugger) {
    // Asked before the runtime's own handler, which would hide a naming that nobody else takes.
    void* handler = AddVectoredExceptionHandler(1, endProcessAtANaming);
    bool ran = false;
    Worker worker([&](Thread&) { ran = true; }, "a name");
    worker.thread.start();
    worker.thread.join();
    RemoveVectoredExceptionHandler(handler);
    EXPECT_TRUE(ran);
}

// Also the test that thread_names_test.cpp debugs.
TEST_F(Threads, WithAndWithoutANameRunAlike) {
    int runs = 0;
    for (const char* name : {"log-manager", ""}) {
        Worker worker([&](Thread&) { ++runs; }, name);
        worker.thread.start();
        worker.thread.join();
    }
    EXPECT_EQ(runs, 2);
}

}  // namespace
