// Flat functions for memory that processes share by name, backed by a file or by the page file.
//
// They throw nothing. They return 1 for success and 0 for failure, with GetLastError left as the
// system left it; a null record gives 0 without a system call. Thread-safe on separate records.
// Names are passed through globalObjectName, and bit 0 of `flags` (useSharedSecurity) gives new
// objects the shared security.
#pragma once

#include <cstdint>

#include "vek/base/windows.h"
#include "vek/os/objects.h"

namespace vek::os {

// Filled by createSharedMemory and openSharedMemory, released by closeSharedMemory; there is no
// destructor. Handles that a call didn't need are null.
struct SharedMemory {
    HANDLE file;              // the backing file; INVALID_HANDLE_VALUE for a page-file mapping
    HANDLE mapping;           // the file mapping
    std::uint32_t size;       // the bytes asked for
    void* view;               // the mapped bytes, readable and writable
    int created;              // 1 if this call created the page-file memory or the backing file
    std::uint32_t lastError;  // the last system error met, also on the way to success
};

// Opens the shared memory `name` or, if there is none, creates it with `size` bytes (not 0). New
// memory is backed by the file `fileName`, which is created if it is missing and made as long as
// the memory, or by the page file if `fileName` is null or empty. If several threads or processes
// create the same memory at the same time, exactly one of them has `created` 1. (Wine may report to
// several that they made the same backing file.)
//
// The result of the mapping is deliberately not checked: if it fails, as for existing memory that
// is smaller than `size`, `view` is null and the result is 1. After a failure nothing is open.
//
// Calls OpenFileMappingA, CreateFileA (shared for reading and writing), CreateFileMappingA and
// MapViewOfFile.
int createSharedMemory(SharedMemory* record, std::uint32_t size, const char* fileName,
                       const char* name, std::uint32_t flags);

// Opens the existing shared memory `name` and maps its first `size` bytes, or all of it for 0.
// Fails if they can't be mapped. After a failure nothing is open. Calls OpenFileMappingA and
// MapViewOfFile.
int openSharedMemory(SharedMemory* record, std::uint32_t size, const char* name);

// Unmaps the bytes and closes the mapping and the file. Returns the result of closing the file, or
// 1 for a page-file mapping. So it returns 0, though everything is released, for memory that
// existed when it was opened, since such a record has no file. The fields are not changed: close a
// record once. Calls UnmapViewOfFile and CloseHandle.
int closeSharedMemory(SharedMemory* record);

// Writes changes in the first `size` bytes at `view`, or all for 0, to the backing file. Calls
// FlushViewOfFile.
int flushView(const void* view, std::uint32_t size);

}  // namespace vek::os
