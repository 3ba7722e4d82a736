#include "vek/os/shared_memory.h"

#include <array>

namespace vek::os {

namespace {

// FILE_MAP_ALL_ACCESS, by the number that it has on all systems.
constexpr DWORD mapAllAccess = 0xF001F;

using NameBuffer = std::array<char, globalNameBuffer>;

HANDLE openBackingFile(const char* fileName, SECURITY_ATTRIBUTES* security, DWORD disposition) {
    return CreateFileA(fileName, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       security, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Fills `file` and `created`. False if the backing file can't be opened.
bool openBacking(SharedMemory& record, const char* fileName, SECURITY_ATTRIBUTES* security) {
    if (fileName == nullptr || fileName[0] == '\0') {
        record.file = INVALID_HANDLE_VALUE;
        record.created = 1;
        return true;
    }
    record.file = openBackingFile(fileName, security, OPEN_EXISTING);
    if (record.file != INVALID_HANDLE_VALUE) {
        return true;
    }
    record.lastError = GetLastError();
    record.file = openBackingFile(fileName, security, OPEN_ALWAYS);
    if (record.file == INVALID_HANDLE_VALUE) {
        record.lastError = GetLastError();
        return false;
    }
    // Another process may have created it since the first attempt.
    record.created = GetLastError() != ERROR_ALREADY_EXISTS ? 1 : 0;
    return true;
}

// Notes the error of the failed call before, and closes `handle` without touching that error.
int failed(SharedMemory& record, HANDLE handle) {
    record.lastError = GetLastError();
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE) {
        CloseHandle(handle);
        SetLastError(record.lastError);
    }
    return 0;
}

}  // namespace

int createSharedMemory(SharedMemory* record, std::uint32_t size, const char* fileName,
                       const char* name, std::uint32_t flags) {
    if (record == nullptr) {
        return 0;
    }
    NameBuffer buffer;
    const char* global = globalObjectName(name, buffer.data(), buffer.size());
    SECURITY_ATTRIBUTES* security = securityAttributesFor(flags);
    *record = {};
    record->mapping = OpenFileMappingA(mapAllAccess, FALSE, global);
    if (record->mapping == nullptr) {
        record->lastError = GetLastError();
        if (!openBacking(*record, fileName, security)) {
            return 0;
        }
        record->mapping =
            CreateFileMappingA(record->file, security, PAGE_READWRITE, 0, size, global);
        if (record->mapping == nullptr) {
            failed(*record, record->file);
            record->file = INVALID_HANDLE_VALUE;
            record->created = 0;
            return 0;
        }
        // Another process may have created memory of the page file since the attempt to open it.
        if (record->file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ALREADY_EXISTS) {
            record->created = 0;
        }
    }
    record->size = size;
    // Deliberately untested: memory that can't be mapped is a null view.
    record->view = MapViewOfFile(record->mapping, mapAllAccess, 0, 0, size);
    return 1;
}

int openSharedMemory(SharedMemory* record, std::uint32_t size, const char* name) {
    if (record == nullptr) {
        return 0;
    }
    NameBuffer buffer;
    const char* global = globalObjectName(name, buffer.data(), buffer.size());
    *record = {};
    record->mapping = OpenFileMappingA(mapAllAccess, FALSE, global);
    if (record->mapping == nullptr) {
        return failed(*record, nullptr);
    }
    record->view = MapViewOfFile(record->mapping, mapAllAccess, 0, 0, size);
    if (record->view == nullptr) {
        failed(*record, record->mapping);
        record->mapping = nullptr;
        return 0;
    }
    record->size = size;
    return 1;
}

int closeSharedMemory(SharedMemory* record) {
    if (record == nullptr) {
        return 0;
    }
    UnmapViewOfFile(record->view);
    CloseHandle(record->mapping);
    if (record->file == INVALID_HANDLE_VALUE) {
        return 1;
    }
    // Null for memory that existed when it was opened: closing that fails, and deliberately so does
    // this function.
    return CloseHandle(record->file) != 0 ? 1 : 0;
}

int flushView(const void* view, std::uint32_t size) {
    return FlushViewOfFile(view, size) != 0 ? 1 : 0;
}

}  // namespace vek::os
