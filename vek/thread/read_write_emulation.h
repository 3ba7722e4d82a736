// vek::thread::ReadWriteEmulation: a reader/writer lock made of a mutex and two conditions, for
// systems without one. Writers take precedence: a new reader waits while a writer waits.
//
// Its conditions are native if the system has them. If they are emulated too, a thread that had to
// wait doesn't get the lock but OsError with code 1131 (see condition_emulation.h). The lock still
// counts that thread as waiting, so that after a writer no reader gets the lock any more, and a
// wake-up of the same gate by another thread blocks while it holds the whole lock. Locking without
// a wait, and unlocking without waiters, work as usual.
#pragma once

#include <cstdint>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/thread/condition.h"
#include "vek/thread/mutex.h"

namespace vek::thread {

// Thread-safe. A thread that locks what it holds is not detected.
class VEK_CAPABILITY ReadWriteEmulation : public NoCopy {
  public:
    // Throws OsError as Condition's constructor does.
    ReadWriteEmulation() = default;

    // Blocks until no writer holds the lock or waits for it, and locks it together with other
    // readers. Throws as Condition::wait does.
    void lockShared() VEK_ACQUIRE_SHARED();

    // Blocks until the lock is free, and locks it exclusively. Throws as above.
    void lockExclusive() VEK_ACQUIRE();

    // Unlocks what the caller holds. The last holder wakes the next writer, or all readers if no
    // writer waits. A free lock must not be unlocked. Throws as Condition::wakeOne does.
    void unlock() VEK_RELEASE_ANY();

  private:
    Mutex lock{true};
    Condition readerGate{lock};
    Condition writerGate{lock};
    std::uint32_t readersWaiting VEK_GUARDED_BY(lock) = 0;
    std::uint32_t writersWaiting VEK_GUARDED_BY(lock) = 0;
    // The number of holders.
    std::uint32_t readers VEK_GUARDED_BY(lock) = 0;
    std::uint32_t writer VEK_GUARDED_BY(lock) = 0;
};

}  // namespace vek::thread
