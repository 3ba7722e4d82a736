// The one-time look-ups of the condition and the reader/writer functions.
#include "tests/vek/thread/lock_support.h"
#include "vek/thread/condition.h"
#include "vek/thread/read_write_lock.h"

namespace {

using namespace vek::thread;
using vek_test::LookedUpIn;
using vek_test::nativeLibrary;
using vek_test::olderLibrary;

class LookUps : public testing::Test {
  protected:
    void SetUp() override { forget(); }
    void TearDown() override { forget(); }

    static void forget() {
        resetConditionFunctions();
        resetReadWriteFunctions();
    }
};

TEST_F(LookUps, FindTheFunctionsOfTheSystem) {
    const HMODULE system = GetModuleHandleA("kernel32");
    const auto isSystems = [system](auto function, const char* name) {
        return reinterpret_cast<void (*)()>(function) ==
               reinterpret_cast<void (*)()>(GetProcAddress(system, name));
    };
    resolveConditionFunctions();
    ASSERT_NE(nativeConditions(), nullptr);
    EXPECT_TRUE(isSystems(nativeConditions()->initialize, "InitializeConditionVariable"));
    EXPECT_TRUE(isSystems(nativeConditions()->wakeOne, "WakeConditionVariable"));
    EXPECT_TRUE(isSystems(nativeConditions()->wakeAll, "WakeAllConditionVariable"));
    EXPECT_TRUE(isSystems(nativeConditions()->sleep, "SleepConditionVariableCS"));
    resolveReadWriteFunctions();
    ASSERT_NE(nativeReadWriteLocks(), nullptr);
    EXPECT_TRUE(isSystems(nativeReadWriteLocks()->initialize, "InitializeSRWLock"));
    EXPECT_TRUE(isSystems(nativeReadWriteLocks()->acquireExclusive, "AcquireSRWLockExclusive"));
    EXPECT_TRUE(isSystems(nativeReadWriteLocks()->releaseExclusive, "ReleaseSRWLockExclusive"));
    EXPECT_TRUE(isSystems(nativeReadWriteLocks()->acquireShared, "AcquireSRWLockShared"));
    EXPECT_TRUE(isSystems(nativeReadWriteLocks()->releaseShared, "ReleaseSRWLockShared"));
}

TEST_F(LookUps, AreDoneByTheFirstObject) {
    EXPECT_EQ(nativeConditions(), nullptr);
    EXPECT_EQ(nativeReadWriteLocks(), nullptr);
    const Condition condition;
    EXPECT_NE(nativeConditions(), nullptr);
    EXPECT_EQ(nativeReadWriteLocks(), nullptr);
    const ReadWriteLock lock;
    EXPECT_NE(nativeReadWriteLocks(), nullptr);
}

TEST_F(LookUps, OneMissingFunctionMeansThatNoneIsUsed) {
    const LookedUpIn older(olderLibrary, olderLibrary);
    // All but the last one are there.
    EXPECT_NO_THROW(older.conditionLibrary().resolve("WakeAllConditionVariable"));
    EXPECT_NO_THROW(older.conditionLibrary().resolve("AcquireSRWLockShared"));
    EXPECT_EQ(nativeConditions(), nullptr);
    EXPECT_EQ(nativeReadWriteLocks(), nullptr);
}

TEST_F(LookUps, AreIndependentOfEachOther) {
    const LookedUpIn mixed(nativeLibrary, olderLibrary);
    EXPECT_NE(nativeConditions(), nullptr);
    EXPECT_EQ(nativeReadWriteLocks(), nullptr);
}

TEST_F(LookUps, AreNotRepeated) {
    const LookedUpIn older(olderLibrary, olderLibrary);
    resolveConditionFunctions();
    resolveReadWriteFunctions();
    const Condition condition;
    const ReadWriteLock lock;
    EXPECT_EQ(nativeConditions(), nullptr);
    EXPECT_EQ(nativeReadWriteLocks(), nullptr);
}

TEST_F(LookUps, AreDoneAnewAfterAReset) {
    { const LookedUpIn older(olderLibrary, olderLibrary); }
    resolveConditionFunctions();
    resolveReadWriteFunctions();
    EXPECT_NE(nativeConditions(), nullptr);
    EXPECT_NE(nativeReadWriteLocks(), nullptr);
}

TEST_F(LookUps, ObjectsOutliveAResetInTheirOwnWay) {
    Condition native;
    ReadWriteLock nativeLock;
    const LookedUpIn older(olderLibrary, olderLibrary);
    native.wakeOne();
    native.wakeAll();
    {
        const ScopeGuard guard(native);
        EXPECT_FALSE(native.waitUntil(vek::time::MonotonicClock(false)));
    }
    nativeLock.lockShared();
    nativeLock.unlock();
    nativeLock.lockExclusive();
    nativeLock.unlock();
}

}  // namespace
