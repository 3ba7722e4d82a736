// vek::fs::Lock: locks a whole file against other handles, of this process and of others.
//
// A lock belongs to the handle that took it. On Windows it is mandatory: under an exclusive lock
// every read and write through another handle fails with 33 (ERROR_LOCK_VIOLATION), also by
// programs that take no locks, and under a shared lock every write, that of the lock's own handle
// included. So a Copier or a log's reader fails on a locked file. Only access through a mapping of
// the file isn't stopped. (Wine locks against other locks alone.)
#pragma once

#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::fs {

// Locks the file of `handle` over its whole length. Blocks, without limit, until no other handle
// holds a lock that excludes this one, and returns true; with `tryOnly` returns false instead of
// blocking. A shared lock excludes exclusive ones only. Calls LockFileEx. Throws OsError.
//
// A handle may hold several shared locks; each is unlocked by itself. Asking for an exclusive lock
// through a handle that holds any lock blocks for ever. Not for handles opened for overlapped I/O.
bool lockFile(HANDLE handle, bool exclusive, bool tryOnly);

// Not thread-safe.
class Lock : public NoCopy {
  public:
    // Has no file.
    Lock() = default;

    // As `assign`.
    explicit Lock(HANDLE lockedFile) { assign(lockedFile); }

    // Releases the locks that are held. A failure is reported on std::cerr.
    ~Lock();

    // Makes `lockedFile` the file to lock, and releases the locks held on the one before. Doesn't
    // own the handle, which must stay open while this uses it: the system releases the locks of a
    // handle that is closed. Throws UsageError for INVALID_HANDLE_VALUE and null, which change
    // nothing, and what `unlock` throws.
    void assign(HANDLE lockedFile);

    // As lockFile. Throw OsError, with 6 (ERROR_INVALID_HANDLE) if no file is assigned.
    void lockShared() { acquire(false, false); }
    bool tryLockShared() { return acquire(false, true); }
    void lockExclusive() { acquire(true, false); }
    bool tryLockExclusive() { return acquire(true, true); }

    // Releases one lock. Calls UnlockFileEx. Throws OsError, also if none is held.
    void unlock();

  private:
    bool acquire(bool exclusive, bool tryOnly);

    HANDLE file = INVALID_HANDLE_VALUE;
    // Locks taken and not yet released. So the destructor reports no error after a refused try or
    // an unlock by hand.
    std::uint32_t held = 0;
};

}  // namespace vek::fs
