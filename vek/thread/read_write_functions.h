// The system's slim reader/writer locks, which older systems don't have.
#pragma once

#include "vek/base/shared_lib.h"
#include "vek/base/windows.h"

namespace vek::thread {

struct ReadWriteFunctions {
    decltype(&::InitializeSRWLock) initialize;
    decltype(&::AcquireSRWLockExclusive) acquireExclusive;
    decltype(&::ReleaseSRWLockExclusive) releaseExclusive;
    decltype(&::AcquireSRWLockShared) acquireShared;
    decltype(&::ReleaseSRWLockShared) releaseShared;
};

// These work like the functions of condition_functions.h. The two look-ups are independent.
void resolveReadWriteFunctions();
void resolveReadWriteFunctions(const SharedLib& library);
void resetReadWriteFunctions();
const ReadWriteFunctions* nativeReadWriteLocks();

}  // namespace vek::thread
