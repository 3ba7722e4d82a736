#include "vek/thread/condition.h"

#include <memory>

#include "tests/vek/thread/lock_support.h"

namespace {

using namespace vek::thread;
using vek::time::MonotonicClock;
using vek_test::LookedUpIn;
using vek_test::nativeLibrary;
using vek_test::olderLibrary;
using vek_test::osErrorOf;
using vek_test::Signal;
using vek_test::watchedLibrary;

MonotonicClock in(std::int64_t milliseconds) {
    MonotonicClock clock(true);
    clock += milliseconds;
    return clock;
}

// The mutex, which the caller holds, has its count in order: one more lock is refused, and then the
// caller still holds it once.
void expectHeldOnce(Mutex& mutex) {
    EXPECT_TRUE(mutex.isHeldByCaller());
    EXPECT_EQ(osErrorOf([&] { mutex.lock(); }), 1131u);
    mutex.unlock();
    EXPECT_TRUE(mutex.isHeldByCaller());
}

// --- native ---

class NativeCondition : public testing::Test {
  protected:
    const LookedUpIn lookedUp{nativeLibrary, nativeLibrary};
    Condition condition;
};

TEST_F(NativeCondition, WakeUpsWithoutWaitersAreNoError) {
    EXPECT_NO_THROW(condition.wakeOne());
    EXPECT_NO_THROW(condition.wakeAll());
}

TEST_F(NativeCondition, OwnMutexChecksReentry) {
    const ScopeGuard guard(condition);
    expectHeldOnce(condition.getMutex());
}

TEST_F(NativeCondition, SharesTheMutexThatIsHandedIn) {
    Mutex mutex(true);
    {
        const Condition sharing(mutex);
        Condition second(mutex);
        EXPECT_EQ(&second.getMutex(), &mutex);
    }
    // It isn't destroyed with the conditions.
    EXPECT_NO_THROW(const ScopeGuard guard(mutex));
}

TEST_F(NativeCondition, WaitReturnsWithTheMutexHeldAfterAWakeUp) {
    Signal about;
    bool ready = false;
    std::thread waiter([&] {
        const ScopeGuard guard(condition);
        about.set();
        while (!ready) {
            condition.wait();
            expectHeldOnce(condition.getMutex());
        }
    });
    ASSERT_TRUE(about.wait());
    {
        const ScopeGuard guard(condition);
        ready = true;
        condition.wakeOne();
    }
    waiter.join();
}

TEST_F(NativeCondition, WaitUntilGivesTrueWithTheMutexHeldAfterAWakeUp) {
    Signal about;
    bool ready = false;
    std::thread waiter([&] {
        const ScopeGuard guard(condition);
        about.set();
        while (!ready) {
            EXPECT_TRUE(condition.waitUntil(in(60000)));
            expectHeldOnce(condition.getMutex());
        }
    });
    ASSERT_TRUE(about.wait());
    {
        const ScopeGuard guard(condition);
        ready = true;
        condition.wakeAll();
    }
    waiter.join();
}

TEST_F(NativeCondition, WaitUntilGivesFalseWithTheMutexHeldOnTimeOut) {
    const ScopeGuard guard(condition);
    const MonotonicClock start(true);
    EXPECT_FALSE(condition.waitUntil(in(50)));
    EXPECT_GE(MonotonicClock(true) - start, 45);
    expectHeldOnce(condition.getMutex());
}

TEST_F(NativeCondition, DeadlineInThePastGivesFalseAtOnce) {
    const ScopeGuard guard(condition);
    const MonotonicClock start(true);
    EXPECT_FALSE(condition.waitUntil(in(-5000000000)));
    EXPECT_FALSE(condition.waitUntil(MonotonicClock(false)));
    EXPECT_LT(MonotonicClock(true) - start, 30000);
    expectHeldOnce(condition.getMutex());
}

TEST_F(NativeCondition, WaitsOnARecursiveMutexToo) {
    Mutex recursive(false);
    Condition sharing(recursive);
    const ScopeGuard guard(sharing);
    EXPECT_FALSE(sharing.waitUntil(in(10)));
    EXPECT_TRUE(recursive.isHeldByCaller());
    EXPECT_NO_THROW(const ScopeGuard nested(sharing));
}

TEST_F(NativeCondition, HandsOverWithoutLosingAWakeUp) {
    constexpr int rounds = 5000;
    int turn = 0;
    const auto play = [&](int own) {
        for (int round = 0; round < rounds; ++round) {
            const ScopeGuard guard(condition);
            while (turn % 2 != own) {
                condition.wait();
            }
            ++turn;
            condition.wakeOne();
        }
    };
    std::thread odd(play, 1);
    play(0);
    odd.join();
    EXPECT_EQ(turn, 2 * rounds);
}

TEST_F(NativeCondition, ManyConsumersGetAllThatIsProduced) {
    constexpr int perProducer = 5000;
    constexpr int producers = 2;
    constexpr int consumers = 3;
    int queued = 0;
    int consumed = 0;
    const auto consume = [&] {
        const ScopeGuard guard(condition);
        for (;;) {
            while (queued == 0 && consumed < producers * perProducer) {
                condition.wait();
            }
            if (queued == 0) {
                return;
            }
            --queued;
            if (++consumed == producers * perProducer) {
                condition.wakeAll();
            }
        }
    };
    const auto produce = [&] {
        for (int i = 0; i < perProducer; ++i) {
            const ScopeGuard guard(condition);
            ++queued;
            condition.wakeOne();
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
    EXPECT_EQ(consumed, producers * perProducer);
}

TEST_F(NativeCondition, WakeAllReleasesEveryWaiter) {
    constexpr int waiterCount = 4;
    for (int round = 0; round < 200; ++round) {
        int waiting = 0;
        bool released = false;
        std::vector<std::thread> threads;
        for (int i = 0; i < waiterCount; ++i) {
            threads.emplace_back([&] {
                const ScopeGuard guard(condition);
                ++waiting;
                while (!released) {
                    condition.wait();
                }
            });
        }
        ASSERT_TRUE(vek_test::becomesTrue([&] {
            const ScopeGuard guard(condition);
            return waiting == waiterCount;
        }));
        {
            const ScopeGuard guard(condition);
            released = true;
            condition.wakeAll();
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
}

// --- native, with sleeping made to fail ---

class FailingCondition : public testing::Test {
  protected:
    void SetUp() override { failSleepsWith(ERROR_NOT_ENOUGH_MEMORY); }
    void TearDown() override { failSleepsWith(ERROR_SUCCESS); }

    const LookedUpIn lookedUp{watchedLibrary, nativeLibrary};
    void(WINAPI* failSleepsWith)(DWORD) =
        vek::resolveFunction<void(WINAPI*)(DWORD)>(lookedUp.conditionLibrary(), "failSleepsWith");
    Condition condition;
};

TEST_F(FailingCondition, WaitThrowsTheSystemsError) {
    ASSERT_NE(nativeConditions(), nullptr);
    const ScopeGuard guard(condition);
    EXPECT_EQ(osErrorOf([&] { condition.wait(); }), 8u);
}

TEST_F(FailingCondition, WaitUntilThrowsTheSystemsErrorUnlessItIsATimeOut) {
    const ScopeGuard guard(condition);
    EXPECT_EQ(osErrorOf([&] { condition.waitUntil(in(60000)); }), 8u);
}

TEST_F(FailingCondition, WaitTakesATimeOutForAnErrorToo) {
    failSleepsWith(ERROR_TIMEOUT);
    const ScopeGuard guard(condition);
    EXPECT_EQ(osErrorOf([&] { condition.wait(); }), 1460u);
}

TEST_F(FailingCondition, FailedWaitLosesCountOfOneLocking) {
    Mutex& mutex = condition.getMutex();
    mutex.lock();
    EXPECT_EQ(osErrorOf([&] { condition.wait(); }), 8u);
    EXPECT_TRUE(mutex.isHeldByCaller());
    // Deliberate: the count stays where it was for the sleep, so that a second lock isn't noticed.
    EXPECT_EQ(osErrorOf([&] { mutex.lock(); }), 0u);
    mutex.unlock();
    mutex.unlock();
}

// --- emulated ---

class EmulatedCondition : public testing::Test {
  protected:
    const LookedUpIn lookedUp{olderLibrary, nativeLibrary};
    Mutex mutex{true};
    Condition condition{mutex};
};

// Wakes a waiter of `condition`, and gives what it gets: the number of its OsError.
std::uint32_t errorOfAWokenWaiter(Condition& condition, bool withDeadline, bool wakeAll) {
    Signal about;
    std::uint32_t error = 0;
    bool mutexHeld = true;
    std::thread waiter([&] {
        ScopeGuard guard(condition);
        about.set();
        error = osErrorOf([&] {
            sleepUnder(guard, condition, [&] {
                if (withDeadline) {
                    condition.waitUntil(in(60000));
                } else {
                    condition.wait();
                }
            });
        });
        mutexHeld = condition.getMutex().isHeldByCaller();
    });
    EXPECT_TRUE(about.wait());
    {
        // Once the mutex is free, the waiter has taken its ticket.
        const ScopeGuard guard(condition);
        if (wakeAll) {
            condition.wakeAll();
        } else {
            condition.wakeOne();
        }
    }
    waiter.join();
    EXPECT_FALSE(mutexHeld);
    return error;
}

TEST_F(EmulatedCondition, WokenWaiterGetsADeadlockErrorWithTheMutexFree) {
    EXPECT_EQ(errorOfAWokenWaiter(condition, false, false), 1131u);
    EXPECT_NO_THROW(const ScopeGuard guard(mutex));
}

TEST_F(EmulatedCondition, WokenWaiterWithADeadlineGetsTheSame) {
    EXPECT_EQ(errorOfAWokenWaiter(condition, true, false), 1131u);
}

TEST_F(EmulatedCondition, WaiterThatAllWakeGetsTheSame) {
    EXPECT_EQ(errorOfAWokenWaiter(condition, false, true), 1131u);
}

TEST_F(EmulatedCondition, HasAMutexOfItsOwnOtherwise) {
    Condition own;
    {
        const ScopeGuard guard(own);
        expectHeldOnce(own.getMutex());
    }
    EXPECT_EQ(errorOfAWokenWaiter(own, false, false), 1131u);
}

TEST_F(EmulatedCondition, TimeOutGivesFalseWithTheMutexHeld) {
    const ScopeGuard guard(condition);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(condition.waitUntil(in(20)));
        expectHeldOnce(mutex);
    }
}

TEST_F(EmulatedCondition, WakeUpsWithoutWaitersAreNoErrorAndNotKept) {
    EXPECT_NO_THROW(condition.wakeOne());
    EXPECT_NO_THROW(condition.wakeAll());
    const ScopeGuard guard(condition);
    EXPECT_FALSE(condition.waitUntil(MonotonicClock(false)));
}

TEST_F(EmulatedCondition, WakeOneReleasesTheSecondOfTwoIfTheFirstHasTimedOut) {
    {
        const ScopeGuard guard(condition);
        EXPECT_FALSE(condition.waitUntil(MonotonicClock(false)));
    }
    EXPECT_EQ(errorOfAWokenWaiter(condition, false, false), 1131u);
}

TEST_F(EmulatedCondition, SecondSleepOfAWokenWaiterThrowsAtOnceWithTheMutexHeld) {
    std::thread waker;
    ScopeGuard guard(condition);
    waker = std::thread([&] {
        const ScopeGuard wakersGuard(condition);
        condition.wakeOne();
    });
    EXPECT_EQ(osErrorOf([&] { condition.wait(); }), 1131u);
    waker.join();
    EXPECT_FALSE(mutex.isHeldByCaller());
    mutex.lock();
    EXPECT_EQ(osErrorOf([&] { condition.wait(); }), 1131u);
    EXPECT_TRUE(mutex.isHeldByCaller());
}

TEST_F(EmulatedCondition, SleepUnderKeepsTheGuardOfAWaiterThatHoldsTheMutex) {
    std::thread waker;
    {
        ScopeGuard guard(condition);
        waker = std::thread([&] {
            const ScopeGuard wakersGuard(condition);
            condition.wakeOne();
        });
        EXPECT_EQ(osErrorOf([&] { sleepUnder(guard, condition, [&] { condition.wait(); }); }),
                  1131u);
    }
    waker.join();
    {
        ScopeGuard guard(condition);
        EXPECT_EQ(osErrorOf([&] { sleepUnder(guard, condition, [&] { condition.wait(); }); }),
                  1131u);
    }
    EXPECT_FALSE(mutex.isHeldByCaller());
}

TEST_F(EmulatedCondition, CanBeDestroyedAfterAWakeUp) {
    auto own = std::make_unique<Condition>();
    EXPECT_EQ(errorOfAWokenWaiter(*own, false, false), 1131u);
    testing::internal::CaptureStderr();
    own.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
