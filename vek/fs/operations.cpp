#include "vek/fs/operations.h"

#include "vek/exception.h"
#include "vek/fs/file.h"
#include "vek/fs/system_path.h"
#include "vek/os/directory.h"
#include "vek/os/file.h"

namespace vek::fs {

namespace {

// An entry that is being deleted answers with ERROR_ACCESS_DENIED until its last handle is closed,
// which takes no time if it belongs to another deletion. Read-only files answer the same for good.
constexpr int attemptsIfDenied = 5;

bool meansMissing(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace

bool exists(const std::string& path) {
    HANDLE search = INVALID_HANDLE_VALUE;
    if (os::findFirst(&search, systemPath(path), nullptr, nullptr, nullptr, nullptr) != 0) {
        os::findClose(search);
        return true;
    }
    const DWORD error = GetLastError();
    if (meansMissing(error)) {
        return false;
    }
    throw FsError(path, error);
}

Stat stat(const std::string& path, bool /*followLinks*/) {
    File file;
    file.adopt(CreateFileA(systemPath(path), 0,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.isOpen()) {
        const DWORD error = GetLastError();
        if (meansMissing(error)) {
            throw NoSuchFileError(path, error);
        }
        throw FsError(path, error);
    }
    Stat result = {};
    if (GetFileInformationByHandle(file.nativeHandle(), &result) == 0) {
        throw OsError(GetLastError());
    }
    return result;
}

bool isRegularFile(const std::string& path) {
    try {
        return (stat(path).dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) ==
               0;
    } catch (const Exception&) {
        return false;
    }
}

void removeFile(const std::string& path) {
    if (os::deleteFile(systemPath(path)) == 0) {
        throw FsError(path, GetLastError());
    }
}

void removeDirectory(const std::string& path) {
    if (os::removeDirectory(systemPath(path)) == 0) {
        throw FsError(path, GetLastError());
    }
}

void remove(const std::string& path) {
    if (stat(path).isDirectory()) {
        removeDirectory(path);
    } else {
        removeFile(path);
    }
}

bool removeIfExists(const std::string& path) {
    for (int attempt = 1;; ++attempt) {
        try {
            remove(path);
            return true;
        } catch (const FsError& error) {
            const DWORD code = error.osError().code();
            if (meansMissing(code)) {
                return false;  // also if somebody else removed it behind `stat`
            }
            if (code != ERROR_ACCESS_DENIED || attempt == attemptsIfDenied) {
                throw;
            }
        }
        Sleep(1);
    }
}

void createDirectory(const std::string& path) {
    if (CreateDirectoryA(systemPath(path), nullptr) != 0) {
        return;
    }
    switch (const DWORD error = GetLastError()) {
        case ERROR_ALREADY_EXISTS:
            throw FileExistsError(path, error);
        case ERROR_PATH_NOT_FOUND:
            throw NoSuchFileError(path, error);
        default:
            throw FsError(path, error);
    }
}

std::string readLink(const std::string& /*path*/) {
    throw UsageError("readlink not available on Win32");
}

void createSymlink(const std::string& /*target*/, const std::string& /*link*/) {
    throw UsageError("symlink not available on Win32");
}

void setPermissions(const std::string& /*path*/, std::uint32_t /*mode*/) {
    throw RuntimeError("not implemented");
}

void setOwner(const std::string& /*path*/, std::uint32_t /*user*/, std::uint32_t /*group*/) {
    throw RuntimeError("not implemented");
}

}  // namespace vek::fs
