// vek::thread::ScopeGuard: holds a mutex, or the mutex of a condition, for a scope.
#pragma once

#include "vek/base/compiler.h"
#include "vek/base/scope_guard.h"
#include "vek/thread/mutex.h"

namespace vek::thread {

class Condition;

// Unlocks at the end of the scope, unless dismissed; see vek::ScopeGuard for the rest.
class VEK_SCOPED_CAPABILITY ScopeGuard : public vek::ScopeGuard<Mutex> {
  public:
    // Locks `mutex`. Throws as Mutex::lock does. Nothing is unlocked then: after a re-entry the
    // caller must call the additional `unlock` (see Mutex::lock).
    explicit ScopeGuard(Mutex& mutex) VEK_ACQUIRE(mutex);

    // The same for the mutex of `condition`.
    explicit ScopeGuard(Condition& condition) VEK_ACQUIRE(condition);

    ~ScopeGuard() VEK_RELEASE() {}
};

}  // namespace vek::thread
