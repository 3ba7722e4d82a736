#include "vek/thread/read_write_functions.h"

#include "vek/base/optional_function.h"

namespace vek::thread {

namespace {

OptionalFunctions<ReadWriteFunctions> optionalFunctions;

ReadWriteFunctions lookUp(const SharedLib& library) {
    return {
        .initialize = resolveFunction<decltype(&::InitializeSRWLock)>(library, "InitializeSRWLock"),
        .acquireExclusive = resolveFunction<decltype(&::AcquireSRWLockExclusive)>(
            library, "AcquireSRWLockExclusive"),
        .releaseExclusive = resolveFunction<decltype(&::ReleaseSRWLockExclusive)>(
            library, "ReleaseSRWLockExclusive"),
        .acquireShared =
            resolveFunction<decltype(&::AcquireSRWLockShared)>(library, "AcquireSRWLockShared"),
        .releaseShared =
            resolveFunction<decltype(&::ReleaseSRWLockShared)>(library, "ReleaseSRWLockShared"),
    };
}

}  // namespace

void resolveReadWriteFunctions() {
    optionalFunctions.resolve([] { return lookUp(kernel32Library()); });
}

void resolveReadWriteFunctions(const SharedLib& library) {
    optionalFunctions.resolve([&library] { return lookUp(library); });
}

void resetReadWriteFunctions() {
    optionalFunctions.reset();
}

const ReadWriteFunctions* nativeReadWriteLocks() {
    return optionalFunctions.get();
}

}  // namespace vek::thread
