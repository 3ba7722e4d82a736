#include "vek/proc/start_lock.h"

namespace vek::proc {

thread::Mutex& startLock() {
    // Never destroyed, since other threads may still start children while the process ends.
    static thread::Mutex& lock = *new thread::Mutex(false);
    return lock;
}

}  // namespace vek::proc
