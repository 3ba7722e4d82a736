#include "vek/thread/scope_guard.h"

#include <stdexcept>

#include "tests/vek/thread/lock_support.h"
#include "vek/thread/condition.h"

namespace {

using vek::thread::Condition;
using vek::thread::Mutex;
using vek::thread::ScopeGuard;
using vek_test::osErrorOf;

TEST(ThreadScopeGuard, HoldsTheMutexForTheScope) {
    Mutex mutex(true);
    {
        const ScopeGuard guard(mutex);
        EXPECT_TRUE(mutex.isHeldByCaller());
    }
    EXPECT_FALSE(mutex.isHeldByCaller());
}

TEST(ThreadScopeGuard, UnlocksWhenAnExceptionLeavesTheScope) {
    Mutex mutex(true);
    EXPECT_THROW(
        {
            const ScopeGuard guard(mutex);
            throw std::runtime_error("leave");
        },
        std::runtime_error);
    EXPECT_FALSE(mutex.isHeldByCaller());
}

TEST(ThreadScopeGuard, KeepsTheMutexLockedOnceDismissed) {
    Mutex mutex(true);
    {
        ScopeGuard guard(mutex);
        guard.dismiss();
    }
    EXPECT_TRUE(mutex.isHeldByCaller());
    mutex.unlock();
}

TEST(ThreadScopeGuard, RefusedLockReleasesNothing) {
    Mutex mutex(true);
    {
        const ScopeGuard guard(mutex);
        EXPECT_EQ(osErrorOf([&] { const ScopeGuard second(mutex); }), 1131u);
    }
    // The section was entered once more than it was left.
    EXPECT_TRUE(mutex.isHeldByCaller());
    mutex.unlock();
    EXPECT_FALSE(mutex.isHeldByCaller());
    EXPECT_NO_THROW(const ScopeGuard guard(mutex));
}

TEST(ThreadScopeGuard, HoldsTheMutexOfACondition) {
    Condition own;
    Mutex mutex(true);
    Condition sharing(mutex);
    {
        const ScopeGuard ownGuard(own);
        EXPECT_TRUE(own.getMutex().isHeldByCaller());
        const ScopeGuard sharingGuard(sharing);
        EXPECT_TRUE(mutex.isHeldByCaller());
    }
    EXPECT_FALSE(own.getMutex().isHeldByCaller());
    EXPECT_FALSE(mutex.isHeldByCaller());
}

}  // namespace
