#include "vek/thread/condition_emulation.h"

#include <memory>
#include <set>

#include "tests/vek/thread/lock_support.h"
#include "vek/thread/scope_guard.h"

namespace {

using namespace vek::thread;
using vek::time::MonotonicClock;
using vek_test::becomesTrue;
using vek_test::osErrorOf;
using vek_test::Signal;

constexpr DWORD invalidHandle = 6;
constexpr DWORD accessDenied = 5;

MonotonicClock in(std::int64_t milliseconds) {
    MonotonicClock clock(true);
    clock += milliseconds;
    return clock;
}

// What a woken waiter owes, having got its 1131.
void leaveLock(ConditionEmulation& emulation) {
    emulation.getLock().unlock();
    emulation.getLock().unlock();
}

// A thread that waits on an emulation, and notes where it came out.
class Waiter {
  public:
    // Returns once the thread sleeps, or is about to: its ticket is taken.
    Waiter(ConditionEmulation& waitedOn, Mutex& held, std::int64_t timeoutMs = -1)
        : emulation(waitedOn), mutex(held), timeout(timeoutMs), thread([this] { wait(); }) {
        EXPECT_TRUE(about.wait());
        // It lets go of the mutex behind taking its ticket.
        const ScopeGuard guard(mutex);
    }
    ~Waiter() { thread.join(); }

    bool hasLeft() { return left; }
    // Waits for the end and gives the number of the OsError; 0 is a time-out.
    std::uint32_t result() {
        EXPECT_TRUE(done.wait());
        return error;
    }
    bool heldMutex() const { return mutexHeld; }
    bool heldLock() const { return lockHeld; }

  private:
    void wait() {
        mutex.lock();
        about.set();
        error = osErrorOf([this] {
            if (timeout < 0) {
                emulation.wait(mutex);
                ADD_FAILURE() << "a wait has returned";
            } else {
                EXPECT_FALSE(emulation.waitUntil(mutex, in(timeout)));
            }
        });
        mutexHeld = mutex.isHeldByCaller();
        lockHeld = emulation.getLock().isHeldByCaller();
        if (mutexHeld) {
            mutex.unlock();
        }
        left = true;
        if (lockHeld) {
            leaveLock(emulation);
        }
        done.set();
    }

    ConditionEmulation& emulation;
    Mutex& mutex;
    const std::int64_t timeout;
    Signal about;
    Signal done;
    std::uint32_t error = 0;
    bool mutexHeld = false;
    bool lockHeld = false;
    std::atomic<bool> left = false;
    std::thread thread;
};

class Emulation : public testing::Test {
  protected:
    // Takes a ticket and abandons it.
    void abandonATicket() {
        const ScopeGuard guard(mutex);
        EXPECT_FALSE(emulation.waitUntil(mutex, MonotonicClock(false)));
        EXPECT_TRUE(mutex.isHeldByCaller());
        EXPECT_FALSE(emulation.getLock().isHeldByCaller());
    }

    ConditionEmulation emulation;
    Mutex mutex{true};
};

TEST_F(Emulation, WokenWaiterGetsADeadlockErrorWithTheWrongLockHeld) {
    Waiter waiter(emulation, mutex);
    emulation.wakeOne();
    EXPECT_EQ(waiter.result(), 1131u);
    EXPECT_FALSE(waiter.heldMutex());
    EXPECT_TRUE(waiter.heldLock());
}

TEST_F(Emulation, WokenWaiterWithATimeOutGetsTheSame) {
    Waiter waiter(emulation, mutex, 60000);
    emulation.wakeOne();
    EXPECT_EQ(waiter.result(), 1131u);
    EXPECT_FALSE(waiter.heldMutex());
    EXPECT_TRUE(waiter.heldLock());
}

TEST_F(Emulation, WokenWaiterHoldsTheLockTwice) {
    Signal about;
    std::thread waiter([&] {
        mutex.lock();
        about.set();
        EXPECT_EQ(osErrorOf([&] { emulation.wait(mutex); }), 1131u);
        emulation.getLock().unlock();
        EXPECT_TRUE(emulation.getLock().isHeldByCaller());
        emulation.getLock().unlock();
        EXPECT_FALSE(emulation.getLock().isHeldByCaller());
        EXPECT_NO_THROW(emulation.wakeOne());
    });
    ASSERT_TRUE(about.wait());
    {
        const ScopeGuard guard(mutex);
        emulation.wakeOne();
    }
    waiter.join();
}

TEST_F(Emulation, WokenWaiterThatKeepsTheLockIsRefusedItsOwnOperations) {
    Signal about;
    std::thread waiter([&] {
        mutex.lock();
        about.set();
        EXPECT_EQ(osErrorOf([&] { emulation.wait(mutex); }), 1131u);
        EXPECT_EQ(osErrorOf([&] { emulation.wakeOne(); }), 1131u);
        EXPECT_EQ(osErrorOf([&] { emulation.wakeAll(); }), 1131u);
        mutex.lock();
        EXPECT_EQ(osErrorOf([&] { emulation.wait(mutex); }), 1131u);
        // This one hadn't come as far as leaving it.
        EXPECT_TRUE(mutex.isHeldByCaller());
        mutex.unlock();
    });
    ASSERT_TRUE(about.wait());
    {
        const ScopeGuard guard(mutex);
        emulation.wakeOne();
    }
    waiter.join();
}

TEST_F(Emulation, TimeOutGivesFalseWithTheMutexHeld) {
    const ScopeGuard guard(mutex);
    const MonotonicClock start(true);
    EXPECT_FALSE(emulation.waitUntil(mutex, in(50)));
    EXPECT_GE(MonotonicClock(true) - start, 49);
    EXPECT_TRUE(mutex.isHeldByCaller());
    // The count is in order as well: one lock held, so the next is refused.
    EXPECT_EQ(osErrorOf([&] { mutex.lock(); }), 1131u);
    mutex.unlock();
}

TEST_F(Emulation, DeadlineInThePastLetsOthersHaveTheMutex) {
    std::atomic<bool> hadByOther = false;
    const ScopeGuard guard(mutex);
    std::thread other([&] {
        const ScopeGuard othersGuard(mutex);
        hadByOther = true;
    });
    EXPECT_TRUE(becomesTrue([&] {
        EXPECT_FALSE(emulation.waitUntil(mutex, MonotonicClock(false)));
        return hadByOther.load();
    }));
    other.join();
}

TEST_F(Emulation, WakeUpWithoutWaitersIsNotKept) {
    emulation.wakeOne();
    emulation.wakeAll();
    abandonATicket();
    emulation.wakeOne();
    emulation.wakeAll();
    abandonATicket();
    Waiter waiter(emulation, mutex);
    EXPECT_FALSE(waiter.hasLeft());
    emulation.wakeOne();
    EXPECT_EQ(waiter.result(), 1131u);
}

TEST_F(Emulation, WakeOnePassesOverATicketThatWasAbandoned) {
    abandonATicket();
    Waiter waiter(emulation, mutex);
    emulation.wakeOne();
    EXPECT_EQ(waiter.result(), 1131u);
}

TEST_F(Emulation, WakeOnePassesOverManyAbandonedTickets) {
    Waiter first(emulation, mutex);
    for (int i = 0; i < 5; ++i) {
        abandonATicket();
    }
    Waiter last(emulation, mutex);
    emulation.wakeOne();
    EXPECT_EQ(first.result(), 1131u);
    EXPECT_FALSE(last.hasLeft());
    emulation.wakeOne();
    EXPECT_EQ(last.result(), 1131u);
}

TEST_F(Emulation, WakeAllForgetsTheAbandonedTickets) {
    abandonATicket();
    {
        Waiter waiter(emulation, mutex);
        emulation.wakeAll();
        EXPECT_EQ(waiter.result(), 1131u);
    }
    // A ticket that was left in front of the list would hide the one behind it.
    abandonATicket();
    Waiter waiter(emulation, mutex);
    emulation.wakeOne();
    EXPECT_EQ(waiter.result(), 1131u);
}

TEST_F(Emulation, WakeOneReleasesTheOneThatCameFirst) {
    for (int round = 0; round < 50; ++round) {
        std::vector<std::unique_ptr<Waiter>> waiters;
        for (int i = 0; i < 4; ++i) {
            waiters.push_back(std::make_unique<Waiter>(emulation, mutex));
        }
        for (std::size_t next = 0; next < waiters.size(); ++next) {
            emulation.wakeOne();
            ASSERT_EQ(waiters[next]->result(), 1131u);
            for (std::size_t later = next + 1; later < waiters.size(); ++later) {
                ASSERT_FALSE(waiters[later]->hasLeft());
            }
        }
    }
}

TEST_F(Emulation, SeveralWakeUpsReleaseThatManyOfTheFirst) {
    for (int round = 0; round < 50; ++round) {
        std::vector<std::unique_ptr<Waiter>> waiters;
        for (int i = 0; i < 4; ++i) {
            waiters.push_back(std::make_unique<Waiter>(emulation, mutex));
        }
        emulation.wakeOne();
        emulation.wakeOne();
        ASSERT_EQ(waiters[0]->result(), 1131u);
        ASSERT_EQ(waiters[1]->result(), 1131u);
        ASSERT_FALSE(waiters[2]->hasLeft());
        ASSERT_FALSE(waiters[3]->hasLeft());
        emulation.wakeAll();
    }
}

TEST_F(Emulation, WakeAllReleasesEveryWaiterAndNoLaterOne) {
    for (int round = 0; round < 50; ++round) {
        std::vector<std::unique_ptr<Waiter>> waiters;
        for (int i = 0; i < 4; ++i) {
            waiters.push_back(std::make_unique<Waiter>(emulation, mutex));
        }
        emulation.wakeAll();
        // It comes while the others are still leaving.
        Waiter later(emulation, mutex);
        for (const auto& waiter : waiters) {
            ASSERT_EQ(waiter->result(), 1131u);
        }
        ASSERT_FALSE(later.hasLeft());
        emulation.wakeOne();
        ASSERT_EQ(later.result(), 1131u);
    }
}

TEST_F(Emulation, TimeOutIsNotShortenedByWakeUpsOfOthers) {
    constexpr std::int64_t timeout = 1500;
    Waiter first(emulation, mutex);
    MonotonicClock end(false);
    Signal done;
    const MonotonicClock start(true);
    std::thread second([&] {
        const ScopeGuard guard(mutex);
        EXPECT_FALSE(emulation.waitUntil(mutex, in(timeout)));
        end.refresh();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(timeout / 3));
    emulation.wakeOne();
    const MonotonicClock woken(true);
    EXPECT_EQ(first.result(), 1131u);
    second.join();
    if (woken - start < timeout) {
        // All of the time-out once more from the wake-up on, and not just what was left of it.
        EXPECT_GE(end - woken, timeout - 100);
    }
}

// --- no lost wake-up ---

// A wait that takes what a woken waiter gets for a wake-up: true then, with the mutex held.
void waitAsIfMended(ConditionEmulation& emulation, Mutex& mutex) {
    ASSERT_EQ(osErrorOf([&] { emulation.wait(mutex); }), 1131u);
    leaveLock(emulation);
    mutex.lock();
}

TEST_F(Emulation, HandsOverWithoutLosingAWakeUp) {
    constexpr int rounds = 2000;
    int turn = 0;
    const auto play = [&](int own) {
        for (int round = 0; round < rounds; ++round) {
            const ScopeGuard guard(mutex);
            while (turn % 2 != own) {
                waitAsIfMended(emulation, mutex);
            }
            ++turn;
            emulation.wakeOne();
        }
    };
    std::thread odd(play, 1);
    play(0);
    odd.join();
    EXPECT_EQ(turn, 2 * rounds);
}

TEST_F(Emulation, ManyConsumersGetAllThatIsProduced) {
    constexpr int perProducer = 1500;
    constexpr int producers = 2;
    constexpr int consumers = 3;
    int queued = 0;
    int produced = 0;
    int consumed = 0;
    const auto consume = [&] {
        const ScopeGuard guard(mutex);
        for (;;) {
            while (queued == 0 && consumed < producers * perProducer) {
                waitAsIfMended(emulation, mutex);
            }
            if (queued == 0) {
                return;
            }
            --queued;
            if (++consumed == producers * perProducer) {
                emulation.wakeAll();
            }
        }
    };
    const auto produce = [&] {
        for (int i = 0; i < perProducer; ++i) {
            const ScopeGuard guard(mutex);
            ++queued;
            ++produced;
            emulation.wakeOne();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < consumers; ++i) {
        threads.emplace_back(consume);
    }
    for (int i = 0; i < producers; ++i) {
        threads.emplace_back(produce);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(produced, producers * perProducer);
    EXPECT_EQ(consumed, produced);
}

// --- failures of the system, made by taking the event away from under the emulation ---

// The values of this process's handles.
std::set<std::uintptr_t> openHandles() {
    std::set<std::uintptr_t> open;
    DWORD flags = 0;
    for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0) {
            open.insert(value);
        }
    }
    return open;
}

// An emulation and the value of its event's handle: the one that came with it and is an event.
struct WithKnownEvent {
    std::set<std::uintptr_t> before = openHandles();
    std::unique_ptr<ConditionEmulation> emulation = std::make_unique<ConditionEmulation>();
    HANDLE event = nullptr;
    Mutex mutex{true};

    WithKnownEvent() {
        for (const std::uintptr_t value : openHandles()) {
            const HANDLE handle = reinterpret_cast<HANDLE>(value);
            if (before.count(value) == 0 && ResetEvent(handle) != 0) {
                EXPECT_EQ(event, nullptr);
                event = handle;
            }
        }
        EXPECT_NE(event, nullptr);
    }
};

TEST(EmulationFailure, EventIsManualResetAndNotSignalled) {
    const WithKnownEvent with;
    EXPECT_EQ(WaitForSingleObject(with.event, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    SetEvent(with.event);
    EXPECT_EQ(WaitForSingleObject(with.event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(with.event, 0), WAIT_OBJECT_0);
}

TEST(EmulationFailure, EventIsClosedAtTheEnd) {
    WithKnownEvent with;
    testing::internal::CaptureStderr();
    with.emulation.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    DWORD flags = 0;
    EXPECT_EQ(GetHandleInformation(with.event, &flags), 0);
}

TEST(EmulationFailure, EventThatCannotBeClosedIsReported) {
    WithKnownEvent with;
    // Capturing takes handles of its own: not the one that becomes free.
    testing::internal::CaptureStderr();
    const bool closed = CloseHandle(with.event) != 0;
    with.emulation.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error closing event!\n");
    EXPECT_TRUE(closed);
}

TEST(EmulationFailure, FailedWaitGivesUpAndThrowsWithTheMutexHeld) {
    WithKnownEvent with;
    testing::internal::CaptureStderr();
    CloseHandle(with.event);
    {
        const ScopeGuard guard(with.mutex);
        EXPECT_EQ(osErrorOf([&] { with.emulation->wait(with.mutex); }), invalidHandle);
        EXPECT_TRUE(with.mutex.isHeldByCaller());
        EXPECT_EQ(osErrorOf([&] { with.emulation->waitUntil(with.mutex, in(60000)); }),
                  invalidHandle);
        EXPECT_TRUE(with.mutex.isHeldByCaller());
    }
    EXPECT_FALSE(with.emulation->getLock().isHeldByCaller());
    // Nobody counts as waiting any more: the event that is gone isn't even asked for.
    EXPECT_NO_THROW(with.emulation->wakeOne());
    EXPECT_NO_THROW(with.emulation->wakeAll());
    with.emulation.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error closing event!\n");
}

// Makes `handle` one of `event` that can be waited for and nothing else.
void replaceHandle(HANDLE handle, HANDLE event) {
    const HANDLE self = GetCurrentProcess();
    ASSERT_NE(CloseHandle(handle), 0);
    // The system gives out the lowest free value, or the one that was freed last.
    HANDLE replaced = nullptr;
    for (int i = 0; i < 1000 && replaced != handle; ++i) {
        ASSERT_NE(DuplicateHandle(self, event, self, &replaced, SYNCHRONIZE, FALSE, 0), 0);
    }
    ASSERT_EQ(replaced, handle);
}

// Lets a waiter sleep on an event that its emulation can neither signal nor reset: the handle is
// replaced by one without those rights. `wake` is to fail; the waiter is then woken by the test.
void failToSignalAndReset(void (ConditionEmulation::*wake)()) {
    WithKnownEvent with;
    const HANDLE self = GetCurrentProcess();
    HANDLE ownEvent = nullptr;
    ASSERT_NE(DuplicateHandle(self, with.event, self, &ownEvent, 0, FALSE, DUPLICATE_SAME_ACCESS),
              0);
    ASSERT_NO_FATAL_FAILURE(replaceHandle(with.event, ownEvent));
    Signal about;
    std::uint32_t error = 0;
    bool mutexHeld = false;
    bool lockHeld = true;
    std::thread waiter([&] {
        with.mutex.lock();
        about.set();
        error = osErrorOf([&] { with.emulation->wait(with.mutex); });
        mutexHeld = with.mutex.isHeldByCaller();
        lockHeld = with.emulation->getLock().isHeldByCaller();
        with.mutex.unlock();
    });
    EXPECT_TRUE(about.wait());
    with.mutex.lock();
    with.mutex.unlock();

    EXPECT_EQ(osErrorOf([&] { (with.emulation.get()->*wake)(); }), accessDenied);
    SetEvent(ownEvent);
    waiter.join();
    EXPECT_EQ(error, accessDenied);
    EXPECT_TRUE(mutexHeld);
    EXPECT_FALSE(lockHeld);
    CloseHandle(ownEvent);
}

TEST(EmulationFailure, FailedSignalOfWakeOneThrowsAndFailedResetThrowsWithTheMutexHeld) {
    failToSignalAndReset(&ConditionEmulation::wakeOne);
}

TEST(EmulationFailure, FailedSignalOfWakeAllThrowsAndFailedResetThrowsWithTheMutexHeld) {
    failToSignalAndReset(&ConditionEmulation::wakeAll);
}

}  // namespace
