#include "vek/fs/lock.h"

#include <iostream>

#include "vek/exception.h"

namespace vek::fs {

namespace {

// The length of the range: more than any file has.
constexpr DWORD lengthLow = 0xFFFFFFFF;
constexpr DWORD lengthHigh = 0xFFFFFFFF;

}  // namespace

bool lockFile(HANDLE handle, bool exclusive, bool tryOnly) {
    const DWORD flags =
        (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0u) + (tryOnly ? LOCKFILE_FAIL_IMMEDIATELY : 0u);
    OVERLAPPED start = {};
    if (LockFileEx(handle, flags, 0, lengthLow, lengthHigh, &start) != 0) {
        return true;
    }
    const DWORD error = GetLastError();
    if (tryOnly && error == ERROR_LOCK_VIOLATION) {
        return false;
    }
    throw OsError(error);
}

Lock::~Lock() {
    try {
        while (held > 0) {
            unlock();
        }
    } catch (const Exception& error) {
        std::cerr << "Exception caught while destroying file lock:" << error.printableText();
    }
}

void Lock::assign(HANDLE lockedFile) {
    if (lockedFile == INVALID_HANDLE_VALUE || lockedFile == nullptr) {
        throw UsageError("assigned fs::Lock an invalid file");
    }
    while (held > 0) {
        unlock();
    }
    file = lockedFile;
}

void Lock::unlock() {
    OVERLAPPED start = {};
    if (UnlockFileEx(file, 0, lengthLow, lengthHigh, &start) == 0) {
        throw OsError(GetLastError());
    }
    if (held > 0) {
        --held;
    }
}

bool Lock::acquire(bool exclusive, bool tryOnly) {
    const bool locked = lockFile(file, exclusive, tryOnly);
    held += locked ? 1 : 0;
    return locked;
}

}  // namespace vek::fs
