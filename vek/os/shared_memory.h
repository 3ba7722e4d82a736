// Flat functions over memory that processes share by a name, with a file behind it or without.
//
// They throw nothing. The result is 1 for success and 0 for failure, with GetLastError left as the
// system left it; a null record gives 0 without a system call. Safe from any thread on separate
// records. Names go through globalObjectName, and bit 0 of `flags` (useSharedSecurity) gives new
// objects the shared security.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"
#include "vek/os/objects.h"

namespace vek::os {

// What createSharedMemory and openSharedMemory fill, and closeSharedMemory ends. It doesn't close
// by itself. Handles that a call didn't need are null.
struct SharedMemory {
    HANDLE file;              // the backing file; INVALID_HANDLE_VALUE for a page-file mapping
    HANDLE mapping;           // the file mapping
    std::uint32_t size;       // the bytes asked for
    void* view;               // the mapped bytes, readable and writable
    int created;              // 1 if this call created what backs the memory
    std::uint32_t lastError;  // the last system error met, on the way to success, too
};

// Opens the shared memory `name` or, if there is none, creates it with `size` bytes (not 0). New
// memory is backed by the file `fileName`, which is created where it is missing and made as long as
// the memory, or by the page file if `fileName` is null or empty.
//
// Whether the bytes could be mapped is deliberately not looked at: `view` is null if not, as when
// memory that exists is smaller than `size`, and the result is 1. After a failure nothing is open.
//
// Stands on OpenFileMappingA, CreateFileA (shared for reading and writing), CreateFileMappingA and
// MapViewOfFile.
int createSharedMemory(SharedMemory* record, std::uint32_t size, const char* fileName,
                       const char* name, std::uint32_t flags);

// Opens the existing shared memory `name` and maps its first `size` bytes, or all of it for 0. Here
// it is a failure if they can't be mapped. After a failure nothing is open. Stands on
// OpenFileMappingA and MapViewOfFile.
int openSharedMemory(SharedMemory* record, std::uint32_t size, const char* name);

// Unmaps the bytes and closes the mapping and the file. The result is that of closing the file, or
// 1 for a page-file mapping. So it is 0, though everything is released, for memory that existed
// when it was opened, since such a record has no file. Fields are left as they are: a record is
// closed once. Stands on UnmapViewOfFile and CloseHandle.
int closeSharedMemory(SharedMemory* record);

// Writes changes among the first `size` bytes at `view`, or all for 0, to the backing file. Stands
// on FlushViewOfFile.
int flushView(const void* view, std::uint32_t size);

}  // namespace vek::os
