#include "vek/fs/lock.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/fs/peer.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/file.h"

namespace {

using vek::fs::File;
using vek::fs::Lock;
using vek::fs::lockFile;
using vek::test::codeThrownBy;
using vek::test::Peer;
using vek::test::PeerEvent;
using vek::test::textThrownBy;

// A wait that is expected to run out.
constexpr DWORD blockedForMs = 300;

class LockTest : public vek::test::TemporaryDirectoryTest {
  protected:
    LockTest() {
        writeFile("x", "text");
        first.open(path("x"), vek::fs::Access::readWrite);
        second.open(path("x"), vek::fs::Access::readWrite);
    }

    // What another process gets that tries.
    bool peerGets(const std::string& kind) {
        const int code = Peer("try \"" + path("x") + "\" " + kind).exitCode();
        EXPECT_TRUE(code == 0 || code == 1) << code;
        return code == 0;
    }

    // A process that locks and holds, with its events.
    struct Holder {
        Holder(const std::string& file, const std::string& kind)
            : trying(events + "trying"),
              locked(events + "locked"),
              release(events + "release"),
              process("lock \"" + file + "\" " + kind + " " + events) {}

        std::string events = "vek-fs-lock-" + std::to_string(GetCurrentProcessId()) + "-";
        PeerEvent trying;
        PeerEvent locked;
        PeerEvent release;
        Peer process;
    };

    File first;
    File second;
};

TEST_F(LockTest, ExclusiveKeepsEveryOtherHandleOut) {
    Lock lock(first.nativeHandle());
    EXPECT_TRUE(lock.tryLockExclusive());
    Lock other(second.nativeHandle());
    EXPECT_FALSE(other.tryLockExclusive());
    EXPECT_FALSE(other.tryLockShared());
    lock.unlock();
    EXPECT_TRUE(other.tryLockExclusive());
}

TEST_F(LockTest, SharedKeepsExclusiveOutOnly) {
    Lock lock(first.nativeHandle());
    lock.lockShared();
    Lock other(second.nativeHandle());
    EXPECT_FALSE(other.tryLockExclusive());
    EXPECT_TRUE(other.tryLockShared());
    lock.unlock();
    other.unlock();
    lock.lockExclusive();
    EXPECT_FALSE(other.tryLockShared());
}

TEST_F(LockTest, CoversTheWholeFile) {
    Lock lock(first.nativeHandle());
    lock.lockExclusive();
    for (const DWORD high : {0ul, 1ul, 0x7FFFFFFFul}) {
        OVERLAPPED start = {};
        start.OffsetHigh = high;
        EXPECT_EQ(LockFileEx(second.nativeHandle(), LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start), 0)
            << high;
    }
}

TEST_F(LockTest, IsHeldAgainstOtherProcesses) {
    Lock lock(first.nativeHandle());
    lock.lockExclusive();
    EXPECT_FALSE(peerGets("exclusive"));
    EXPECT_FALSE(peerGets("shared"));
    lock.unlock();
    EXPECT_TRUE(peerGets("exclusive"));
    lock.lockShared();
    EXPECT_FALSE(peerGets("exclusive"));
    EXPECT_TRUE(peerGets("shared"));
}

TEST_F(LockTest, ExclusiveWaitsForTheExclusiveOfAnotherProcess) {
    Lock lock(first.nativeHandle());
    lock.lockExclusive();
    Holder holder(path("x"), "exclusive");
    ASSERT_TRUE(holder.trying.isSetWithin(vek::test::peerLimitMs));
    EXPECT_FALSE(holder.locked.isSetWithin(blockedForMs));
    lock.unlock();
    EXPECT_TRUE(holder.locked.isSetWithin(vek::test::peerLimitMs));
    EXPECT_FALSE(lock.tryLockExclusive());
    holder.release.set();
    EXPECT_EQ(holder.process.exitCode(), 0);
    EXPECT_TRUE(lock.tryLockExclusive());
}

TEST_F(LockTest, SharedWaitsForTheExclusiveOfAnotherProcess) {
    Lock lock(first.nativeHandle());
    lock.lockExclusive();
    Holder holder(path("x"), "shared");
    ASSERT_TRUE(holder.trying.isSetWithin(vek::test::peerLimitMs));
    EXPECT_FALSE(holder.locked.isSetWithin(blockedForMs));
    lock.unlock();
    EXPECT_TRUE(holder.locked.isSetWithin(vek::test::peerLimitMs));
    EXPECT_FALSE(lock.tryLockExclusive());
    EXPECT_TRUE(lock.tryLockShared());
    holder.release.set();
    EXPECT_EQ(holder.process.exitCode(), 0);
}

TEST_F(LockTest, EndOfAProcessReleasesItsLocks) {
    Lock lock(first.nativeHandle());
    {
        Holder holder(path("x"), "exclusive");
        ASSERT_TRUE(holder.locked.isSetWithin(vek::test::peerLimitMs));
        EXPECT_FALSE(lock.tryLockShared());
    }
    EXPECT_TRUE(lock.tryLockExclusive());
}

TEST_F(LockTest, DestructorReleasesAllThatIsHeld) {
    {
        Lock lock(first.nativeHandle());
        lock.lockShared();
        lock.lockShared();
        EXPECT_FALSE(lockFile(second.nativeHandle(), true, true));
    }
    EXPECT_TRUE(lockFile(second.nativeHandle(), true, true));
}

TEST_F(LockTest, DestructorReportsWhatItCantRelease) {
    auto lock = std::make_unique<Lock>(first.nativeHandle());
    lock->lockExclusive();
    testing::internal::CaptureStderr();  // ahead of the close: it opens a file of its own
    first.close();
    lock.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception caught while destroying file lock:" +
                  vek::OsError(ERROR_INVALID_HANDLE).printableText());
}

TEST_F(LockTest, DestructorIsSilentIfNothingIsHeld) {
    lockFile(second.nativeHandle(), true, false);
    testing::internal::CaptureStderr();
    {
        const Lock none;
        const Lock unused(first.nativeHandle());
        Lock refused(first.nativeHandle());
        EXPECT_FALSE(refused.tryLockShared());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LockTest, AssigningReleasesAndGoesToTheOtherFile) {
    writeFile("y", "");
    File other;
    other.open(path("y"), vek::fs::Access::readWrite);
    Lock lock(first.nativeHandle());
    lock.lockExclusive();
    lock.assign(other.nativeHandle());
    EXPECT_TRUE(lockFile(second.nativeHandle(), true, true));
    EXPECT_TRUE(lock.tryLockExclusive());
}

TEST_F(LockTest, InvalidFileIsRefusedAndChangesNothing) {
    const std::string expected = "Usage error: assigned fs::Lock an invalid file";
    EXPECT_EQ(textThrownBy<vek::UsageError>([] { Lock lock(INVALID_HANDLE_VALUE); }), expected);
    Lock lock(first.nativeHandle());
    lock.lockExclusive();
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { lock.assign(INVALID_HANDLE_VALUE); }), expected);
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { lock.assign(nullptr); }), expected);
    EXPECT_FALSE(lockFile(second.nativeHandle(), false, true));
    EXPECT_NO_THROW(lock.unlock());
}

TEST_F(LockTest, FailuresAreOsErrors) {
    constexpr std::uint32_t invalidHandle = ERROR_INVALID_HANDLE;
    Lock none;
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { none.lockShared(); }), invalidHandle);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { none.tryLockShared(); }), invalidHandle);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { none.lockExclusive(); }), invalidHandle);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { none.tryLockExclusive(); }), invalidHandle);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { none.unlock(); }), invalidHandle);
    EXPECT_EQ(codeThrownBy<vek::OsError>([] { lockFile(INVALID_HANDLE_VALUE, true, true); }),
              invalidHandle);
    Lock lock(first.nativeHandle());
    EXPECT_THROW(lock.unlock(), vek::OsError);  // nothing is held
}

TEST_F(LockTest, FreeFunctionChoosesByItsTwoArguments) {
    EXPECT_TRUE(lockFile(first.nativeHandle(), false, false));
    EXPECT_TRUE(lockFile(second.nativeHandle(), false, true));
    EXPECT_FALSE(lockFile(second.nativeHandle(), true, true));
    first.close();
    second.open(path("x"), vek::fs::Access::readWrite);
    EXPECT_TRUE(lockFile(second.nativeHandle(), true, false));
    first.open(path("x"), vek::fs::Access::readWrite);
    EXPECT_FALSE(lockFile(first.nativeHandle(), false, true));
}

}  // namespace
