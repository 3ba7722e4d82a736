// vek::thread::ReadWriteLock: many readers or one writer.
//
// Uses the system's slim locks if there are any (see read_write_functions.h), otherwise a
// ReadWriteEmulation; the constructor decides. In a native lock no side takes precedence, in an
// emulated one the writers do; for the other differences see read_write_emulation.h.
#pragma once

#include <atomic>
#include <memory>
#include <variant>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/thread/read_write_emulation.h"
#include "vek/thread/read_write_functions.h"

namespace vek::thread {

// Thread-safe. A thread that holds it, in either way, must not lock it.
class VEK_CAPABILITY ReadWriteLock : public NoCopy {
  public:
    // Throws OsError if an emulation can't be made; natively this can't happen.
    ReadWriteLock();

    // Block until the lock is free for it, and lock it together with other readers, or exclusively.
    // A native lock throws nothing, an emulated one as ReadWriteEmulation does. Call
    // AcquireSRWLockShared and AcquireSRWLockExclusive.
    void lockShared() VEK_ACQUIRE_SHARED();
    void lockExclusive() VEK_ACQUIRE();

    // Unlocks what the caller holds. A free lock must not be unlocked. Throws as above. Calls
    // ReleaseSRWLockShared or ReleaseSRWLockExclusive.
    void unlock() VEK_RELEASE_ANY();

  private:
    // Has a copy of the functions, so that it works after resetReadWriteFunctions.
    struct Native {
        ReadWriteFunctions functions;
        SRWLOCK lock;
    };

    std::variant<Native, std::unique_ptr<ReadWriteEmulation>> state;
    // Of a native lock: the present holders are readers. All readers write it, hence atomic.
    std::atomic<bool> sharedHeld = false;
};

}  // namespace vek::thread
