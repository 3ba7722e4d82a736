#include "vek/fs/stream_file.h"

#include "vek/exception.h"

namespace vek::fs {

namespace {

DWORD moveMethod(std::uint32_t whence) {
    switch (whence) {
        case Whence::current:
            return FILE_CURRENT;
        case Whence::end:
            return FILE_END;
        default:
            return FILE_BEGIN;
    }
}

}  // namespace

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

std::uint32_t StreamFile::seek(std::uint32_t offset, std::uint32_t whence) {
    LARGE_INTEGER distance = {};
    distance.QuadPart = offset;
    return move(distance, moveMethod(whence)).LowPart;
}

void StreamFile::resize(std::uint64_t size) {
    const LARGE_INTEGER position = move({}, FILE_CURRENT);
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(size);
    move(end, FILE_BEGIN);
    if (SetEndOfFile(handle) == 0) {
        throw OsError(GetLastError());
    }
    move(position, FILE_BEGIN);
}

void StreamFile::takeEnd(HANDLE& end) {
    if (end == INVALID_HANDLE_VALUE) {
        throw UsageError("bad pipe end passed");
    }
    adopt(end);
    end = INVALID_HANDLE_VALUE;
}

LARGE_INTEGER StreamFile::move(LARGE_INTEGER distance, DWORD method) {
    LARGE_INTEGER position = {};
    if (SetFilePointerEx(handle, distance, &position, method) == 0) {
        throw OsError(GetLastError());
    }
    return position;
}

}  // namespace vek::fs
