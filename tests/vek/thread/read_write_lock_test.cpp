#include "vek/thread/read_write_lock.h"

#include <array>
#include <numeric>
#include <random>

#include "tests/vek/thread/lock_support.h"

namespace {

using namespace vek::thread;
using vek_test::Barrier;
using vek_test::becomesTrue;
using vek_test::LookedUpIn;
using vek_test::nativeLibrary;
using vek_test::olderLibrary;
using vek_test::osErrorOf;
using vek_test::Signal;
using vek_test::watchedLibrary;

// --- what native and emulated locks have in common; the latter on native conditions ---

class EitherLock : public testing::TestWithParam<const char*> {
  protected:
    const LookedUpIn lookedUp{nativeLibrary, GetParam()};
    ReadWriteLock lock;
};

INSTANTIATE_TEST_SUITE_P(Native, EitherLock, testing::Values(nativeLibrary));
INSTANTIATE_TEST_SUITE_P(Emulated, EitherLock, testing::Values(olderLibrary));

TEST_P(EitherLock, IsOfTheKindThatTheSystemAllows) {
    EXPECT_EQ(nativeReadWriteLocks() != nullptr, std::string(GetParam()) == nativeLibrary);
}

TEST_P(EitherLock, CanBeTakenInBothWaysAgainAndAgain) {
    for (int i = 0; i < 1000; ++i) {
        lock.lockShared();
        lock.unlock();
        lock.lockExclusive();
        lock.unlock();
    }
}

TEST_P(EitherLock, ReadersHoldItTogether) {
    constexpr int readerCount = 4;
    Barrier allInside(readerCount);
    std::vector<std::thread> threads;
    for (int i = 0; i < readerCount; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                lock.lockShared();
                // Passed only while all of them hold the lock.
                EXPECT_TRUE(allInside.arriveAndWait());
                lock.unlock();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_P(EitherLock, WritersExcludeEverybody) {
    constexpr int rounds = 3000;
    std::atomic<int> readersInside = 0;
    std::atomic<int> writersInside = 0;
    std::atomic<int> violations = 0;
    int written = 0;
    const auto read = [&] {
        for (int round = 0; round < rounds; ++round) {
            lock.lockShared();
            ++readersInside;
            const int seen = written;
            if (writersInside != 0 || written != seen) {
                ++violations;
            }
            --readersInside;
            lock.unlock();
        }
    };
    const auto write = [&] {
        for (int round = 0; round < rounds; ++round) {
            lock.lockExclusive();
            if (++writersInside != 1 || readersInside != 0) {
                ++violations;
            }
            ++written;
            --writersInside;
            lock.unlock();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back(read);
        threads.emplace_back(write);
    }
    // Every waiter is released in the end, or this doesn't return.
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(violations, 0);
    EXPECT_EQ(written, 2 * rounds);
}

// Each of 8 threads reads and writes in an order of its own. A reader that came in beside a writer
// would see a part of its change, and a writer beside another would lose one of theirs.
TEST_P(EitherLock, HoldsUnderReadersAndWritersInAnyOrder) {
    constexpr int threadCount = 8;
    constexpr unsigned rounds = 2000;
    std::array<volatile unsigned, 16> written = {};
    std::array<unsigned, threadCount> writes = {};
    std::atomic<int> torn = 0;
    const auto use = [&](unsigned number) {
        std::minstd_rand random(number + 1);
        for (unsigned round = 0; round < rounds; ++round) {
            const bool writing = random() % 4 == 0;
            writing ? lock.lockExclusive() : lock.lockShared();
            const unsigned first = written[0];
            for (volatile unsigned& value : written) {
                torn += value != first;
                if (writing) {
                    value = first + 1;
                }
                if (random() % 64 == 0) {
                    std::this_thread::yield();
                }
            }
            writes[number] += writing;
            lock.unlock();
        }
    };
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < threadCount; ++number) {
        threads.emplace_back(use, number);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(written[0], std::accumulate(writes.begin(), writes.end(), 0u));
    EXPECT_GT(written[0], 0u);
}

TEST_P(EitherLock, WriterWaitsForTheLastReader) {
    lock.lockShared();
    std::thread secondReader([&] {
        lock.lockShared();
        lock.unlock();
    });
    secondReader.join();
    std::atomic<bool> written = false;
    std::thread writer([&] {
        lock.lockExclusive();
        written = true;
        lock.unlock();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(written);
    lock.unlock();
    writer.join();
    EXPECT_TRUE(written);
}

// --- the emulated lock alone, on conditions whose sleepers are counted ---

class EmulatedLock : public testing::Test {
  protected:
    // Waits until `count` threads have gone to sleep in the lock since the start of the test. They
    // have left the lock's mutex when its next operation gets that.
    bool haveGoneToSleep(unsigned count) {
        return becomesTrue([&] { return sleepCount() - sleepsBefore >= count; });
    }

    // Starts a thread that takes the lock, notes `name`, and gives it back.
    void startUser(bool exclusive, char name) {
        threads.emplace_back([this, exclusive, name] {
            if (exclusive) {
                lock.lockExclusive();
            } else {
                lock.lockShared();
            }
            {
                const ScopeGuard guard(orderMutex);
                order += name;
            }
            lock.unlock();
        });
    }

    std::string orderAtTheEnd() {
        for (std::thread& thread : threads) {
            thread.join();
        }
        threads.clear();
        return order;
    }

    const LookedUpIn lookedUp{watchedLibrary, olderLibrary};
    unsigned(WINAPI* sleepCount)() =
        vek::resolveFunction<unsigned(WINAPI*)()>(lookedUp.conditionLibrary(), "sleepCount");
    const unsigned sleepsBefore = sleepCount();
    ReadWriteLock lock;
    Mutex orderMutex{true};
    std::string order;
    std::vector<std::thread> threads;
};

TEST_F(EmulatedLock, TakesNoSleepWithoutContention) {
    lock.lockShared();
    lock.lockShared();
    lock.unlock();
    lock.unlock();
    lock.lockExclusive();
    lock.unlock();
    EXPECT_EQ(sleepCount(), sleepsBefore);
}

TEST_F(EmulatedLock, ReaderBehindAWaitingWriterWaitsThoughReadersHoldTheLock) {
    lock.lockShared();
    startUser(true, 'w');
    ASSERT_TRUE(haveGoneToSleep(1));
    startUser(false, 'r');
    ASSERT_TRUE(haveGoneToSleep(2));
    {
        const ScopeGuard guard(orderMutex);
        EXPECT_EQ(order, "");
    }
    lock.unlock();
    EXPECT_EQ(orderAtTheEnd(), "wr");
}

TEST_F(EmulatedLock, LeavingWriterPrefersTheNextWriterToReaders) {
    lock.lockExclusive();
    startUser(false, 'r');
    ASSERT_TRUE(haveGoneToSleep(1));
    startUser(false, 'r');
    ASSERT_TRUE(haveGoneToSleep(2));
    startUser(true, 'w');
    ASSERT_TRUE(haveGoneToSleep(3));
    lock.unlock();
    EXPECT_EQ(orderAtTheEnd(), "wrr");
    // The readers weren't woken to find the writer ahead of them.
    EXPECT_EQ(sleepCount() - sleepsBefore, 3u);
}

TEST_F(EmulatedLock, LeavingWriterLetsAllReadersIn) {
    lock.lockExclusive();
    Barrier allInside(3);
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            lock.lockShared();
            EXPECT_TRUE(allInside.arriveAndWait());
            lock.unlock();
        });
    }
    ASSERT_TRUE(haveGoneToSleep(3));
    lock.unlock();
    orderAtTheEnd();
}

TEST_F(EmulatedLock, OnlyTheLastReaderLetsTheWriterIn) {
    lock.lockShared();
    lock.lockShared();
    startUser(true, 'w');
    ASSERT_TRUE(haveGoneToSleep(1));
    lock.unlock();
    {
        const ScopeGuard guard(orderMutex);
        EXPECT_EQ(order, "");
    }
    // Nobody was woken, so the writer didn't look and go back to sleep.
    EXPECT_EQ(sleepCount() - sleepsBefore, 1u);
    lock.unlock();
    EXPECT_EQ(orderAtTheEnd(), "w");
}

TEST_F(EmulatedLock, EveryWriterInLineGetsItsTurnBeforeTheReaders) {
    for (int round = 0; round < 20; ++round) {
        order.clear();
        const unsigned before = sleepCount() - sleepsBefore;
        lock.lockExclusive();
        startUser(false, 'r');
        ASSERT_TRUE(haveGoneToSleep(before + 1));
        for (unsigned i = 0; i < 3; ++i) {
            startUser(true, 'w');
            ASSERT_TRUE(haveGoneToSleep(before + 2 + i));
        }
        lock.unlock();
        ASSERT_EQ(orderAtTheEnd(), "wwwr");
    }
}

// --- emulated through and through ---

class EmulatedLockOnEmulatedConditions : public testing::Test {
  protected:
    const LookedUpIn lookedUp{olderLibrary, olderLibrary};
};

TEST_F(EmulatedLockOnEmulatedConditions, WorksWithoutContention) {
    ReadWriteLock lock;
    for (int i = 0; i < 100; ++i) {
        lock.lockShared();
        lock.lockShared();
        lock.unlock();
        lock.unlock();
        lock.lockExclusive();
        lock.unlock();
    }
}

// Holds a lock in one way while another thread takes it in another way, and lets go when that
// thread has had the time to fall asleep. Returns the number of the OsError that the other one
// gets; 0 if it came too late to sleep.
std::uint32_t errorOfAWaiter(ReadWriteLock& lock, bool holdExclusive, bool waitExclusive) {
    if (holdExclusive) {
        lock.lockExclusive();
    } else {
        lock.lockShared();
    }
    Signal about;
    std::uint32_t error = 0;
    std::thread waiter([&] {
        about.set();
        error = osErrorOf([&] {
            if (waitExclusive) {
                lock.lockExclusive();
            } else {
                lock.lockShared();
            }
        });
    });
    EXPECT_TRUE(about.wait());
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    lock.unlock();
    waiter.join();
    return error;
}

std::uint32_t errorOfAnyWaiter(bool holdExclusive, bool waitExclusive) {
    std::uint32_t error = 0;
    for (int attempt = 0; attempt < 20 && error == 0; ++attempt) {
        ReadWriteLock lock;
        error = errorOfAWaiter(lock, holdExclusive, waitExclusive);
    }
    return error;
}

TEST_F(EmulatedLockOnEmulatedConditions, WaitersGetADeadlockErrorInPlaceOfTheLock) {
    EXPECT_EQ(errorOfAnyWaiter(true, false), 1131u);
    EXPECT_EQ(errorOfAnyWaiter(true, true), 1131u);
    EXPECT_EQ(errorOfAnyWaiter(false, true), 1131u);
}

TEST_F(EmulatedLockOnEmulatedConditions, ReaderThatWasRefusedLeavesTheLockFree) {
    for (int attempt = 0; attempt < 20; ++attempt) {
        ReadWriteLock lock;
        if (errorOfAWaiter(lock, true, false) == 0) {
            continue;
        }
        // The lock's mutex isn't held by the thread that has gone, nor is the lock by the reader.
        Signal locked;
        std::thread other([&] {
            lock.lockExclusive();
            locked.set();
        });
        EXPECT_TRUE(locked.wait());
        other.join();
        return;
    }
    FAIL() << "the reader never came to wait";
}

}  // namespace
