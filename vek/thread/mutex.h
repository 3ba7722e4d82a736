// vek::thread::Mutex: a critical section that can notice when its owner locks it again.
#pragma once

#include <cstdint>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::thread {

class Mutex : public NoCopy {
  public:
    // With `checkReentry` a second lock by the owner throws; without it, locking nests.
    explicit Mutex(bool checkReentry);
    ~Mutex();

    // Waits without bound until the mutex is free, and takes it. Stands on EnterCriticalSection.
    //
    // A second lock by its owner throws OsError with code 1131 (ERROR_POSSIBLE_DEADLOCK) if
    // re-entry is checked. The section is left entered once more then, deliberately: whoever
    // catches this owes one more `unlock`.
    void lock();

    // Counts down and leaves the section. To be called by the owner. Stands on
    // LeaveCriticalSection. Throws nothing.
    void unlock();

    // The calling thread is in the section. Throws nothing.
    bool isHeldByCaller() const;

  private:
    // Sleeps on the section.
    friend class Condition;

    CRITICAL_SECTION section;
    const bool recursive;
    // Touched only with the section held; counted up while `recursive` is false, and always counted
    // down.
    std::uint32_t depth = 0;
};

}  // namespace vek::thread
