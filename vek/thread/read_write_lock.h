// vek::thread::ReadWriteLock: many readers or one writer.
//
// It uses the system's slim locks where there are any (see read_write_functions.h) and a
// ReadWriteEmulation otherwise; which, is settled when it is made. A native lock prefers nobody, an
// emulated one the writers; read read_write_emulation.h for what else is different there.
#pragma once

#include <atomic>
#include <memory>
#include <variant>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"
#include "vek/thread/read_write_emulation.h"
#include "vek/thread/read_write_functions.h"

namespace vek::thread {

// Safe from any thread. It must not be locked by a thread that holds it, in either way.
class ReadWriteLock : public NoCopy {
  public:
    // Throws OsError if there is nothing to sleep on, which can't happen natively.
    ReadWriteLock();

    // Wait without bound, and take the lock together with other readers, or alone. A native lock
    // throws nothing, an emulated one as ReadWriteEmulation does. Stand on AcquireSRWLockShared and
    // AcquireSRWLockExclusive.
    void lockShared();
    void lockExclusive();

    // Gives back what the caller holds. A lock that nobody holds must not be unlocked. Throws as
    // above. Stands on ReleaseSRWLockShared and ReleaseSRWLockExclusive.
    void unlock();

  private:
    // Holds its functions, so that it survives their being forgotten at the end of the program.
    struct Native {
        ReadWriteFunctions functions;
        SRWLOCK lock;
    };

    std::variant<Native, std::unique_ptr<ReadWriteEmulation>> state;
    // Of a native lock: those that hold it now are readers. All readers write it, hence atomic.
    std::atomic<bool> sharedHeld = false;
};

}  // namespace vek::thread
