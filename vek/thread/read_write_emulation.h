// vek::thread::ReadWriteEmulation: a reader/writer lock made of a mutex and two conditions, for
// systems that have none of their own. Writers take precedence: a reader that comes while a writer
// waits, waits behind it.
//
// Its conditions are native where the system has those. Where they are emulated too, a thread that
// had to wait doesn't get the lock but OsError with code 1131, as condition_emulation.h tells; the
// lock still counts that thread as waiting (so that after a writer no reader gets in any more), and
// a wake-up of the same gate by another thread blocks with the whole lock held. Locking without a
// wait, and unlocking without waiters, work as always.
#pragma once

#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/thread/condition.h"
#include "vek/thread/mutex.h"

namespace vek::thread {

// Safe from any thread. Nothing notices a thread that locks what it holds.
class ReadWriteEmulation : public NoCopy {
  public:
    // Throws OsError as Condition's constructor does.
    ReadWriteEmulation() = default;

    // Waits without bound until no writer holds the lock or waits for it, and takes it together
    // with other readers. Throws as Condition::wait does.
    void lockShared();

    // Waits without bound until nobody holds the lock, and takes it alone. Throws as above.
    void lockExclusive();

    // Gives back what the caller holds. The last one out lets the next writer in, or all readers if
    // no writer waits. A lock that nobody holds must not be unlocked. Throws as Condition::wakeOne
    // does.
    void unlock();

  private:
    // Guards the below.
    Mutex lock{true};
    Condition readerGate{lock};
    Condition writerGate{lock};
    std::uint32_t readersWaiting = 0;
    std::uint32_t writersWaiting = 0;
    // Those that hold the lock.
    std::uint32_t readers = 0;
    std::uint32_t writer = 0;
};

}  // namespace vek::thread
