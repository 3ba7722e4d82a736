#include "vek/thread/mutex.h"

#include "vek/exception.h"

namespace vek::thread {

namespace {

// How often a thread looks whether the lock is free ahead of going to sleep for it. A lock is
// mostly held for a fraction of what going to sleep and waking up costs.
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
    // Whoever else comes and goes meanwhile, only the caller can put its own id there.
    const HANDLE volatile& owner = section.OwningThread;
    return owner == ULongToHandle(GetCurrentThreadId());
}

}  // namespace vek::thread
