// What a thread can't do, and threads on emulated conditions. What ends a process, or could leave
// one in pieces, runs in a process of its own.
#include <cstdlib>
#include <functional>
#include <system_error>

#include "tests/vek/thread/lock_support.h"
#include "vek/base/os_error_text.h"
#include "vek/thread/thread.h"

namespace {

using namespace vek::thread;
using vek_test::becomesTrue;
using vek_test::LookedUpIn;
using vek_test::nativeLibrary;
using vek_test::olderLibrary;
using vek_test::openHandles;
using vek_test::Signal;
using vek_test::textOf;

// The exit code of a process that std::terminate has ended.
constexpr int terminated = 3;

class Worker : public Thread {
  public:
    explicit Worker(std::function<void(Worker&)> toDo) : Thread("worker"), work(std::move(toDo)) {}
    void run() override { work(*this); }

    bool sleeps() {
        return becomesTrue([this] { return getState() == WAITING; });
    }

  private:
    std::function<void(Worker&)> work;
};

// The condition of the std::system_error that `f` throws; none if it throws none.
template <class F>
std::error_code systemErrorOf(F f) {
    try {
        f();
    } catch (const std::system_error& error) {
        return error.code();
    }
    return {};
}

// --- destruction ---

void destroyAnActiveThread() {
    Worker worker([](Worker& self) { self.wait(); });
    worker.start();
}

TEST(ThreadFailure, DestroyingAnActiveThreadEndsTheProcess) {
    EXPECT_EXIT(destroyAnActiveThread(), testing::ExitedWithCode(terminated), "");
}

void destroyAnEndedThread() {
    Worker worker([](Worker&) {});
    worker.start();
    becomesTrue([&] { return worker.getState() == Thread::ENDED; });
}

TEST(ThreadFailure, DestroyingAThreadThatHasEndedButIsNotJoinedDoesSoToo) {
    EXPECT_EXIT(destroyAnEndedThread(), testing::ExitedWithCode(terminated), "");
}

// --- join ---

TEST(ThreadFailure, WorkerCannotJoinItself) {
    std::error_code error;
    Worker worker([&](Worker& self) {
        error = systemErrorOf([&] { self.join(); });
        EXPECT_NE(self.getId(), 0u);
    });
    worker.start();
    worker.join();
    EXPECT_EQ(error, std::errc::resource_deadlock_would_occur);
}

// Closes the handle by which `thread` is waited for.
bool closeHandleOf(const Thread& thread) {
    for (std::uintptr_t value = 4; value < 0x10000; value += 4) {
        const HANDLE handle = reinterpret_cast<HANDLE>(value);
        if (GetThreadId(handle) == thread.getId()) {
            return CloseHandle(handle) != 0;
        }
    }
    return false;
}

[[noreturn]] void joinWithoutAHandle() {
    Worker worker([](Worker& self) { self.wait(); });
    worker.start();
    const std::uint32_t id = worker.getId();
    // Nothing else opens handles meanwhile.
    worker.sleeps();
    if (!closeHandleOf(worker)) {
        std::_Exit(1);
    }
    if (systemErrorOf([&] { worker.join(); }) != std::errc::no_such_process) {
        std::_Exit(2);
    }
    std::_Exit(worker.getId() == id ? 0 : 3);
}

TEST(ThreadFailure, FailedJoinThrowsAndLeavesTheThreadActive) {
    EXPECT_EXIT(joinWithoutAHandle(), testing::ExitedWithCode(0), "");
}

TEST(ThreadFailure, JoinClosesTheHandle) {
    Worker worker([](Worker&) {});
    const auto startAndJoin = [&worker] {
        worker.start();
        worker.join();
    };
    startAndJoin();
    const std::size_t before = openHandles().size();
    for (int i = 0; i < 50; ++i) {
        startAndJoin();
    }
    EXPECT_LT(openHandles().size(), before + 50);
}

// --- creation ---

// Leaves no room for the stack of another thread.
void takeTheAddressSpace() {
    for (SIZE_T size = 64u << 20; size >= 512u << 10; size /= 2) {
        while (VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS) != nullptr) {
        }
    }
}

[[noreturn]] void startWithoutRoom() {
    Worker worker([](Worker&) {});
    takeTheAddressSpace();
    const std::error_code error = systemErrorOf([&] { worker.start(); });
    if (error != std::errc::resource_unavailable_try_again) {
        std::_Exit(1);
    }
    // It may be tried again, and isn't active: it can be destroyed.
    if (worker.getId() != 0 ||
        systemErrorOf([&] { worker.start(); }) != std::errc::resource_unavailable_try_again) {
        std::_Exit(2);
    }
    if (worker.getState() != Thread::RUNNING) {
        std::_Exit(3);
    }
    worker.~Worker();
    std::_Exit(0);
}

TEST(ThreadFailure, ThreadThatTheSystemRefusesThrows) {
    EXPECT_EXIT(startWithoutRoom(), testing::ExitedWithCode(0), "");
}

// --- on emulated conditions ---

class EmulatedThreads : public testing::Test {
  protected:
    const LookedUpIn lookedUp{olderLibrary, nativeLibrary};
};

TEST_F(EmulatedThreads, TimeOutOfAWaitGivesTrueAndTheWorkerRuns) {
    std::vector<bool> results;
    Thread::State state = Thread::CREATED;
    Worker worker([&](Worker& self) {
        for (int i = 0; i < 3; ++i) {
            results.push_back(self.wait(20));
        }
        state = self.getState();
    });
    worker.start();
    worker.join();
    EXPECT_EQ(results, (std::vector<bool>{true, true, true}));
    EXPECT_EQ(state, Thread::RUNNING);
}

TEST_F(EmulatedThreads, WaitAfterTerminateIsFalseWithoutASleep) {
    Signal inside;
    Signal goOn;
    bool result = true;
    Worker worker([&](Worker& self) {
        inside.set();
        EXPECT_TRUE(goOn.wait());
        result = self.wait();
    });
    worker.start();
    ASSERT_TRUE(inside.wait());
    EXPECT_FALSE(worker.wakeup());
    worker.terminate();
    goOn.set();
    worker.join();
    EXPECT_FALSE(result);
}

TEST_F(EmulatedThreads, WorkerThatIsWokenDiesOfTheEmulationsError) {
    for (const bool terminate : {false, true}) {
        for (const bool withLimit : {false, true}) {
            Worker worker([=](Worker& self) {
                if (withLimit) {
                    self.wait(60000);
                } else {
                    self.wait();
                }
            });
            testing::internal::CaptureStderr();
            worker.start();
            const std::string id = std::to_string(worker.getId());
            ASSERT_TRUE(worker.sleeps());
            if (terminate) {
                worker.terminate();
            } else {
                EXPECT_TRUE(worker.wakeup());
            }
            worker.join();
            EXPECT_EQ(testing::internal::GetCapturedStderr(),
                      "Thread worker (" + id +
                          ") died with VEK exception:" + vek::osErrorText(1131) + " (1131)\n\n");
            EXPECT_EQ(worker.getState(), Thread::ENDED);
        }
    }
}

TEST_F(EmulatedThreads, WokenWorkerThatCatchesTheErrorCanReadItsStateAndEnd) {
    std::uint32_t error = 0;
    Thread::State state = Thread::CREATED;
    Worker worker([&](Worker& self) {
        error = vek_test::osErrorOf([&] { self.wait(); });
        state = self.getState();
    });
    worker.start();
    ASSERT_TRUE(worker.sleeps());
    EXPECT_TRUE(worker.wakeup());
    worker.join();
    EXPECT_EQ(error, 1131u);
    EXPECT_EQ(state, Thread::RUNNING);
    // It has ended, so that nobody is to be woken.
}

}  // namespace
