// vek::thread::Mutex: a critical section that can detect a second lock by its owner.
#pragma once

#include <cstdint>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::thread {

class VEK_CAPABILITY Mutex : public NoCopy {
  public:
    // With `checkReentry` a second lock by the owner throws; without it, the mutex is recursive.
    explicit Mutex(bool checkReentry);
    ~Mutex();

    // Blocks until the mutex is free, and locks it. Calls EnterCriticalSection.
    //
    // If re-entry is checked, a second lock by the owner throws OsError with code 1131
    // (ERROR_POSSIBLE_DEADLOCK). Deliberately, the section stays entered once more then: the caller
    // must call `unlock` once more.
    void lock() VEK_ACQUIRE();

    // Unlocks once. Only the owner may call this. Calls LeaveCriticalSection. Throws nothing.
    void unlock() VEK_RELEASE();

    // Returns whether the calling thread holds the mutex. Throws nothing.
    bool isHeldByCaller() const;

  private:
    // Waits with the section.
    friend class Condition;

    CRITICAL_SECTION section;
    const bool recursive;
    // Accessed only with the section held. Incremented only if `recursive` is false, always
    // decremented.
    std::uint32_t depth = 0;
};

}  // namespace vek::thread
