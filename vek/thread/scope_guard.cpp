#include "vek/thread/scope_guard.h"

#include "vek/thread/condition.h"

namespace vek::thread {

namespace {

// The mutex is locked before there is a guard: a failed lock is not to be released.
Mutex* locked(Mutex& mutex) VEK_ACQUIRE(mutex) {
    mutex.lock();
    return &mutex;
}

// Not checked: the guard calls it, which the check can't see.
void unlock(Mutex* mutex) VEK_NO_LOCK_ANALYSIS {
    mutex->unlock();
}

}  // namespace

ScopeGuard::ScopeGuard(Mutex& mutex) : vek::ScopeGuard<Mutex>(locked(mutex), unlock) {}

ScopeGuard::ScopeGuard(Condition& condition) : ScopeGuard(condition.getMutex()) {}

}  // namespace vek::thread
