#include "vek/thread/scope_guard.h"

#include "vek/thread/condition.h"

namespace vek::thread {

namespace {

// The mutex is locked before there is a guard: a failed lock is not to be released.
Mutex* locked(Mutex& mutex) {
    mutex.lock();
    return &mutex;
}

void unlock(Mutex* mutex) {
    mutex->unlock();
}

}  // namespace

ScopeGuard::ScopeGuard(Mutex& mutex) : vek::ScopeGuard<Mutex>(locked(mutex), unlock) {}

ScopeGuard::ScopeGuard(Condition& condition) : ScopeGuard(condition.getMutex()) {}

}  // namespace vek::thread
