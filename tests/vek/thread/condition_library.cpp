// The system's condition functions by way of a library of their own, which counts the sleepers and
// can make sleeping fail. The .def files have the names under which they are exported.
#include <atomic>

#include "vek/base/windows.h"

namespace {

std::atomic<unsigned> sleeps = 0;
std::atomic<DWORD> sleepError = 0;

}  // namespace

extern "C" {

void WINAPI initializeCondition(CONDITION_VARIABLE* variable) {
    InitializeConditionVariable(variable);
}

void WINAPI wakeOne(CONDITION_VARIABLE* variable) {
    WakeConditionVariable(variable);
}

void WINAPI wakeAll(CONDITION_VARIABLE* variable) {
    WakeAllConditionVariable(variable);
}

BOOL WINAPI sleepOnCondition(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section,
                             DWORD timeoutMs) {
    // With the section held, so that a thread that locks it after seeing the count finds a sleeper.
    ++sleeps;
    if (sleepError != 0) {
        SetLastError(sleepError);
        return FALSE;
    }
    return SleepConditionVariableCS(variable, section, timeoutMs);
}

void WINAPI initializeLock(SRWLOCK* lock) {
    InitializeSRWLock(lock);
}

void WINAPI acquireExclusive(SRWLOCK* lock) {
    AcquireSRWLockExclusive(lock);
}

void WINAPI releaseExclusive(SRWLOCK* lock) {
    ReleaseSRWLockExclusive(lock);
}

void WINAPI acquireShared(SRWLOCK* lock) {
    AcquireSRWLockShared(lock);
}

unsigned WINAPI sleepCount() {
    return sleeps;
}

// Makes each sleep fail with `error` from now on; 0 ends that.
void WINAPI failSleepsWith(DWORD error) {
    sleepError = error;
}

}  // extern "C"
