#include "vek/os/file.h"

#include <limits>

#include <io.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/utime.h>

#include "vek/base/windows.h"
// Needs the types of windows.h.
#include <winternl.h>

#include "vek/os/bounded_text.h"
#include "vek/os/calendar.h"
#include "vek/os/library.h"

namespace vek::os {

namespace {

// The directory bit of _stat's mode, _S_IFDIR.
constexpr int directoryMode = 0x4000;

// With times of 64 bits: those of 32 end in 2038.
bool statusOf(const char* path, struct _stat64& status) {
    return path != nullptr && _stat64(path, &status) == 0;
}

// -1 if the seconds don't fit.
std::int32_t secondsSince1970(const FILETIME& fileTime) {
    const auto ticks = static_cast<std::uint64_t>(fileTime.dwHighDateTime) << 32 |
                       static_cast<std::uint64_t>(fileTime.dwLowDateTime);
    const auto seconds =
        static_cast<std::int64_t>(ticks / fileTimeTicksPerSecond) - secondsFrom1601To1970;
    if (seconds < std::numeric_limits<std::int32_t>::min() ||
        seconds > std::numeric_limits<std::int32_t>::max()) {
        return -1;
    }
    return static_cast<std::int32_t>(seconds);
}

void storeEntry(const WIN32_FIND_DATAA& entry, char* name, int* kind, std::int32_t* time,
                std::uint32_t* size) {
    if (name != nullptr) {
        boundedCopy(name, findNameSize, entry.cFileName);
    }
    if (kind != nullptr) {
        *kind = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? findKindDirectory
                                                                         : findKindOther;
    }
    if (time != nullptr) {
        *time = secondsSince1970(entry.ftLastWriteTime);
    }
    if (size != nullptr) {
        *size = entry.nFileSizeLow;
    }
}

}  // namespace

int deleteFile(const char* path) {
    return path != nullptr && DeleteFileA(path) != 0 ? 1 : 0;
}

int copyFile(const char* from, const char* to, int failIfExists) {
    return from != nullptr && to != nullptr &&
                   CopyFileA(from, to, failIfExists != 0 ? TRUE : FALSE) != 0
               ? 1
               : 0;
}

int moveFile(const char* from, const char* to) {
    return from != nullptr && to != nullptr && MoveFileA(from, to) != 0 ? 1 : 0;
}

int pathExists(const char* path) {
    return path != nullptr && _access(path, 0) == 0 ? 1 : 0;
}

int isDirectory(const char* path) {
    struct _stat64 status = {};
    return statusOf(path, status) ? status.st_mode & directoryMode : 0;
}

int setFileTime(const char* path, __time64_t seconds) {
    struct __utimbuf64 times = {};
    times.actime = seconds;
    times.modtime = seconds;
    return path != nullptr && _utime64(path, &times) != -1 ? 1 : 0;
}

int fileSize(const char* path, std::uint32_t* size) {
    struct _stat64 status = {};
    const bool known = statusOf(path, status);
    if (size != nullptr) {
        *size = known ? static_cast<std::uint32_t>(status.st_size) : 0;
    }
    return known ? 1 : 0;
}

int fileTimes(const char* path, __time64_t* access, __time64_t* modification) {
    struct _stat64 status = {};
    if (!statusOf(path, status)) {
        return 0;
    }
    if (access != nullptr) {
        *access = status.st_atime;
    }
    if (modification != nullptr) {
        *modification = status.st_mtime;
    }
    return 1;
}

int findFirst(HANDLE* find, const char* pattern, char* name, int* kind, std::int32_t* time,
              std::uint32_t* size) {
    if (find == nullptr) {
        return 0;
    }
    WIN32_FIND_DATAA entry = {};
    *find = pattern != nullptr ? FindFirstFileA(pattern, &entry) : INVALID_HANDLE_VALUE;
    if (*find == INVALID_HANDLE_VALUE) {
        return 0;
    }
    storeEntry(entry, name, kind, time, size);
    return 1;
}

int findNext(HANDLE find, char* name, int* kind, std::int32_t* time, std::uint32_t* size) {
    WIN32_FIND_DATAA entry = {};
    if (FindNextFileA(find, &entry) == 0) {
        return 0;
    }
    storeEntry(entry, name, kind, time, size);
    return 1;
}

int findClose(HANDLE find) {
    return FindClose(find) != 0 ? 1 : 0;
}

std::int64_t filePosition(HANDLE file) {
    using Query = decltype(&::NtQueryInformationFile);
    static const auto query = reinterpret_cast<Query>(reinterpret_cast<void (*)()>(
        libraryFunction(GetModuleHandleA("ntdll"), "NtQueryInformationFile")));
    if (query != nullptr) {
        IO_STATUS_BLOCK status = {};
        FILE_POSITION_INFORMATION position = {};
        return query(file, &status, &position, sizeof position, FilePositionInformation) >= 0
                   ? position.CurrentByteOffset.QuadPart
                   : -1;
    }
    LARGE_INTEGER position = {};
    return SetFilePointerEx(file, position, &position, FILE_CURRENT) != 0 ? position.QuadPart : -1;
}

}  // namespace vek::os
