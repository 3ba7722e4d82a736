// vek::thread::ScopeGuard: holds a mutex, or that of a condition, for a scope.
#pragma once

#include "vek/base/scope_guard.h"
#include "vek/thread/mutex.h"

namespace vek::thread {

class Condition;

// Unlocks at the end of the scope, unless dismissed; see vek::ScopeGuard for the rest.
class ScopeGuard : public vek::ScopeGuard<Mutex> {
  public:
    // Locks `mutex`. Throws as Mutex::lock does; nothing is unlocked then, so that whoever catches
    // a re-entry owes the unlock that Mutex::lock tells of.
    explicit ScopeGuard(Mutex& mutex);

    // The same for the mutex of `condition`, to be used around its operations.
    explicit ScopeGuard(Condition& condition);
};

}  // namespace vek::thread
