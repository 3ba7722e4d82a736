#include "vek/fs/stream_file.h"

#include "vek/exception.h"

namespace vek::fs {

std::uint32_t StreamFile::read(void* buffer, std::uint32_t size) {
    DWORD count = 0;
    if (ReadFile(handle, buffer, size, &count, nullptr) == 0) {
        const DWORD error = GetLastError();
        if (error == ERROR_BROKEN_PIPE) {
            return 0;
        }
        throw OsError(error);
    }
    return count;
}

std::uint32_t StreamFile::write(const void* buffer, std::uint32_t size) {
    DWORD count = 0;
    if (WriteFile(handle, buffer, size, &count, nullptr) == 0) {
        throw OsError(GetLastError());
    }
    return count;
}

bool StreamFile::flush() {
    if (FlushFileBuffers(handle) == 0) {
        const DWORD error = GetLastError();
        if (error == ERROR_INVALID_HANDLE) {
            return false;
        }
        throw OsError(error);
    }
    return true;
}

}  // namespace vek::fs
