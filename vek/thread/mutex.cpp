#include "vek/thread/mutex.h"

#include <atomic>

#include "vek/exception.h"

namespace vek::thread {

namespace {

// How often a thread tries to get the lock before it sleeps. A lock is mostly held for a fraction
// of the time that sleeping and waking up takes.
constexpr DWORD spinCount = 300;

}  // namespace

Mutex::Mutex(bool checkReentry) : recursive(!checkReentry) {
    InitializeCriticalSectionAndSpinCount(&section, spinCount);
}

Mutex::~Mutex() {
    DeleteCriticalSection(&section);
}

void Mutex::lock() {
    EnterCriticalSection(&section);
    if (recursive) {
        return;
    }
    if (++depth >= 2) {
        throw OsError(ERROR_POSSIBLE_DEADLOCK);
    }
}

void Mutex::unlock() {
    --depth;
    LeaveCriticalSection(&section);
}

bool Mutex::isHeldByCaller() const {
    // Other threads may enter and leave meanwhile, but only the caller stores its own id.
    const std::atomic_ref<HANDLE> owner(const_cast<HANDLE&>(section.OwningThread));
    return owner.load(std::memory_order_relaxed) == ULongToHandle(GetCurrentThreadId());
}

}  // namespace vek::thread
