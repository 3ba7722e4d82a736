// vek::StdMutex and vek::StdGuard: std::mutex and std::unique_lock, with the annotations that let
// the compiler check their use (see vek/base/compiler.h).
#pragma once

#include <condition_variable>
#include <mutex>

#include "vek/base/compiler.h"
#include "vek/base/no_copy.h"

namespace vek {

// Throws std::system_error as std::mutex does.
class VEK_CAPABILITY StdMutex : public NoCopy {
  public:
    void lock() VEK_ACQUIRE() { mutex.lock(); }      // blocks until no other thread holds it
    void unlock() VEK_RELEASE() { mutex.unlock(); }  // by the thread that holds it

    // Locks it and returns true, unless another thread holds it.
    bool tryLock() VEK_TRY_ACQUIRE(true) { return mutex.try_lock(); }

  private:
    friend class StdGuard;

    std::mutex mutex;
};

// Holds a StdMutex for a scope.
class VEK_SCOPED_CAPABILITY StdGuard : public NoCopy {
  public:
    explicit StdGuard(StdMutex& mutex) VEK_ACQUIRE(mutex) : held(mutex.mutex) {}
    // The caller has locked `mutex` already.
    StdGuard(StdMutex& mutex, std::adopt_lock_t) VEK_REQUIRES(mutex)
        : held(mutex.mutex, std::adopt_lock) {}
    ~StdGuard() VEK_RELEASE() {}

    // For std::condition_variable. The mutex is held before and after a wait. Test the condition in
    // a loop around the wait: in a function that is passed to it, the compiler doesn't know that
    // the mutex is held.
    std::unique_lock<std::mutex>& forWait() { return held; }

  private:
    std::unique_lock<std::mutex> held;
};

// Holds a lock of any class with `lock` and `unlock` for a scope, as std::lock_guard does.
template <class Lock>
class VEK_SCOPED_CAPABILITY LockGuard : public NoCopy {
  public:
    explicit LockGuard(Lock& toLock) VEK_ACQUIRE(toLock) : held(toLock) {}
    ~LockGuard() VEK_RELEASE() {}

  private:
    const std::lock_guard<Lock> held;
};

}  // namespace vek
