// vek::fs::Lock: keeps other processes out of a file, over its whole length.
//
// A lock belongs to the handle that it was taken through. It excludes other handles, of this
// process and of others, that ask for a lock too; a shared lock excludes exclusive ones only.
#pragma once

#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::fs {

// Locks the file behind `handle` over its whole length. With `tryOnly` the result is false if
// another handle holds a lock that is in the way; otherwise waits without limit until none does,
// and the result is true. Stands on LockFileEx. Throws OsError.
//
// One handle may hold several shared locks, each to be unlocked by itself. Waiting for an exclusive
// lock through a handle that holds one waits for ever.
bool lockFile(HANDLE handle, bool exclusive, bool tryOnly);

// Not to be used by two threads at once.
class Lock : public NoCopy {
  public:
    // No file yet.
    Lock() = default;

    // As `assign`.
    explicit Lock(HANDLE lockedFile) { assign(lockedFile); }

    // Releases the locks that are held. A failure of that is reported on std::cerr.
    ~Lock();

    // Makes `lockedFile` the file to lock; locks held on the one before are released first. The
    // handle stays the caller's and has to stay open for as long as this uses it. Throws UsageError
    // for INVALID_HANDLE_VALUE and null, which change nothing, and what `unlock` throws.
    void assign(HANDLE lockedFile);

    // As lockFile. Throw OsError, with 6 (ERROR_INVALID_HANDLE) if no file is assigned.
    void lockShared() { acquire(false, false); }
    bool tryLockShared() { return acquire(false, true); }
    void lockExclusive() { acquire(true, false); }
    bool tryLockExclusive() { return acquire(true, true); }

    // Releases one lock. Stands on UnlockFileEx. Throws OsError, also if none is held.
    void unlock();

  private:
    bool acquire(bool exclusive, bool tryOnly);

    HANDLE file = INVALID_HANDLE_VALUE;
    // The locks taken and not yet released, so that the destructor doesn't report an error where a
    // try was refused or the lock has been given back.
    std::uint32_t held = 0;
};

}  // namespace vek::fs
