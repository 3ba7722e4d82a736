#include "vek/thread/mutex.h"

#include "tests/vek/thread/lock_support.h"

namespace {

using vek::thread::Mutex;
using vek_test::osErrorOf;
using vek_test::Signal;

// How long something that must not happen is waited for.
constexpr std::chrono::milliseconds shortly{100};

// Another thread finds the mutex free, or not.
bool isFreeForOthers(Mutex& mutex) {
    Signal locked;
    std::thread other([&] {
        mutex.lock();
        mutex.unlock();
        locked.set();
    });
    const bool isFree = locked.wait(mutex.isHeldByCaller() ? shortly : vek_test::enough);
    if (!isFree) {
        // It is let through at last, so that the thread can end.
        while (mutex.isHeldByCaller()) {
            mutex.unlock();
        }
    }
    other.join();
    return isFree;
}

TEST(Mutex, CanBeLockedAndUnlockedAgainAndAgain) {
    for (const bool checkReentry : {true, false}) {
        Mutex mutex(checkReentry);
        for (int i = 0; i < 1000; ++i) {
            ASSERT_NO_THROW(mutex.lock());
            ASSERT_TRUE(mutex.isHeldByCaller());
            mutex.unlock();
            ASSERT_FALSE(mutex.isHeldByCaller());
        }
        EXPECT_TRUE(isFreeForOthers(mutex));
    }
}

TEST(Mutex, SecondLockByTheOwnerThrows) {
    Mutex mutex(true);
    mutex.lock();
    EXPECT_EQ(osErrorOf([&] { mutex.lock(); }), 1131u);
    mutex.unlock();
    mutex.unlock();
}

TEST(Mutex, RefusedLockLeavesTheSectionEntered) {
    Mutex mutex(true);
    mutex.lock();
    EXPECT_EQ(osErrorOf([&] { mutex.lock(); }), 1131u);
    mutex.unlock();
    EXPECT_TRUE(mutex.isHeldByCaller());
    EXPECT_FALSE(isFreeForOthers(mutex));
}

TEST(Mutex, IsFreeOnceARefusedLockIsPaidBack) {
    Mutex mutex(true);
    mutex.lock();
    EXPECT_EQ(osErrorOf([&] { mutex.lock(); }), 1131u);
    EXPECT_EQ(osErrorOf([&] { mutex.lock(); }), 1131u);
    mutex.unlock();
    mutex.unlock();
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));
    EXPECT_NO_THROW(mutex.lock());
    mutex.unlock();
}

TEST(Mutex, NestsIfReentryIsNotChecked) {
    Mutex mutex(false);
    for (int i = 0; i < 10; ++i) {
        EXPECT_NO_THROW(mutex.lock());
    }
    for (int i = 0; i < 9; ++i) {
        mutex.unlock();
        EXPECT_TRUE(mutex.isHeldByCaller());
    }
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));
}

TEST(Mutex, IsHeldByItsOwnerOnly) {
    Mutex mutex(true);
    mutex.lock();
    std::thread other([&] { EXPECT_FALSE(mutex.isHeldByCaller()); });
    other.join();
    EXPECT_TRUE(mutex.isHeldByCaller());
    mutex.unlock();
}

TEST(Mutex, KeepsThreadsApart) {
    for (const bool checkReentry : {true, false}) {
        constexpr int threadCount = 4;
        constexpr int rounds = 20000;
        Mutex mutex(checkReentry);
        int inside = 0;
        int total = 0;
        std::atomic<int> violations = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < threadCount; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < rounds; ++round) {
                    mutex.lock();
                    if (++inside != 1) {
                        ++violations;
                    }
                    ++total;
                    --inside;
                    mutex.unlock();
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(violations, 0);
        EXPECT_EQ(total, threadCount * rounds);
    }
}

}  // namespace
