#include "vek/thread/mutex.h"

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
    const HANDLE volatile& owner = section.OwningThread;
    return owner == ULongToHandle(GetCurrentThreadId());
}

}  // namespace vek::thread
