#include "vek/proc/start_lock.h"

namespace vek::proc {

thread::Mutex& startLock() {
    // Never destroyed: other threads may start children while the process exits.
    static thread::Mutex& lock = *new thread::Mutex(false);
    return lock;
}

}  // namespace vek::proc
