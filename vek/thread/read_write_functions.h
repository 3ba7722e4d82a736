// The system's slim reader/writer locks, which older systems lack.
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

// These four are to reader/writer locks what those of condition_functions.h are to conditions. The
// two look-ups are independent of each other.
void resolveReadWriteFunctions();
void resolveReadWriteFunctions(const SharedLib& library);
void resetReadWriteFunctions();
const ReadWriteFunctions* nativeReadWriteLocks();

}  // namespace vek::thread
