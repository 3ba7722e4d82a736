// Critical sections, condition variables and slim locks, each on its counterpart.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>

#include <windows.h>

namespace {

// Other threads look at the owner without holding the section.
std::atomic_ref<HANDLE> ownerOf(CRITICAL_SECTION* section) {
    return std::atomic_ref<HANDLE>(section->OwningThread);
}

HANDLE ownId() {
    return ULongToHandle(GetCurrentThreadId());
}

void mustSucceed(int error) {
    if (error != 0) {
        std::abort();
    }
}

}  // namespace

BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD /*spinCount*/) {
    mustSucceed(pthread_mutex_init(&section->mutex, nullptr));
    ownerOf(section).store(nullptr, std::memory_order_relaxed);
    section->RecursionCount = 0;
    return TRUE;
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    // Windows allows this for one that is held.
    if (ownerOf(section).load(std::memory_order_relaxed) == nullptr) {
        mustSucceed(pthread_mutex_destroy(&section->mutex));
    }
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    if (ownerOf(section).load(std::memory_order_relaxed) == ownId()) {
        ++section->RecursionCount;
        return;
    }
    mustSucceed(pthread_mutex_lock(&section->mutex));
    ownerOf(section).store(ownId(), std::memory_order_relaxed);
    section->RecursionCount = 1;
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    if (ownerOf(section).load(std::memory_order_relaxed) != ownId()) {
        // On Windows this destroys the section.
        std::abort();
    }
    if (--section->RecursionCount == 0) {
        ownerOf(section).store(nullptr, std::memory_order_relaxed);
        mustSucceed(pthread_mutex_unlock(&section->mutex));
    }
}

void InitializeConditionVariable(CONDITION_VARIABLE* variable) {
    pthread_condattr_t attributes;
    mustSucceed(pthread_condattr_init(&attributes));
    mustSucceed(pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC));
    mustSucceed(pthread_cond_init(&variable->condition, &attributes));
    pthread_condattr_destroy(&attributes);
}

void WakeConditionVariable(CONDITION_VARIABLE* variable) {
    mustSucceed(pthread_cond_signal(&variable->condition));
}

void WakeAllConditionVariable(CONDITION_VARIABLE* variable) {
    mustSucceed(pthread_cond_broadcast(&variable->condition));
}

BOOL SleepConditionVariableCS(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section,
                              DWORD timeoutMs) {
    if (ownerOf(section).load(std::memory_order_relaxed) != ownId() ||
        section->RecursionCount != 1) {
        // On Windows other threads would never get the section.
        std::abort();
    }
    ownerOf(section).store(nullptr, std::memory_order_relaxed);
    int error = 0;
    if (timeoutMs == INFINITE) {
        error = pthread_cond_wait(&variable->condition, &section->mutex);
    } else {
        timespec end = {};
        clock_gettime(CLOCK_MONOTONIC, &end);
        const std::int64_t nanoseconds = end.tv_nsec + std::int64_t{timeoutMs} * 1'000'000;
        end.tv_sec += nanoseconds / 1'000'000'000;
        end.tv_nsec = nanoseconds % 1'000'000'000;
        error = pthread_cond_timedwait(&variable->condition, &section->mutex, &end);
    }
    ownerOf(section).store(ownId(), std::memory_order_relaxed);
    section->RecursionCount = 1;
    if (error == ETIMEDOUT) {
        SetLastError(ERROR_TIMEOUT);
        return FALSE;
    }
    mustSucceed(error);
    return TRUE;
}

void InitializeSRWLock(SRWLOCK* lock) {
    mustSucceed(pthread_rwlock_init(&lock->lock, nullptr));
}

void AcquireSRWLockExclusive(SRWLOCK* lock) {
    mustSucceed(pthread_rwlock_wrlock(&lock->lock));
}

void ReleaseSRWLockExclusive(SRWLOCK* lock) {
    mustSucceed(pthread_rwlock_unlock(&lock->lock));
}

void AcquireSRWLockShared(SRWLOCK* lock) {
    mustSucceed(pthread_rwlock_rdlock(&lock->lock));
}

void ReleaseSRWLockShared(SRWLOCK* lock) {
    mustSucceed(pthread_rwlock_unlock(&lock->lock));
}
