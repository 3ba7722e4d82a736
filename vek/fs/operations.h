// Operations on directory entries, given by their paths: exists, stat, remove, create.
//
// A path with a zero byte in it throws FsError with 123 (ERROR_INVALID_NAME). Thread-safe. What
// they do with long paths, trailing dots, device names and files that are being deleted is in
// docs/vek-files.md.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/windows.h"

namespace vek::fs {

// Attributes, times, size, volume and identity of a file or directory.
struct Stat : BY_HANDLE_FILE_INFORMATION {
    // Whether it is a directory.
    bool isDirectory() const { return (dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
};

// Whether there is an entry of that name, of any kind. The name may hold wildcards. A path with a
// separator at its end is never found, nor is the root of a drive ("C:\"). Calls FindFirstFileA.
// Throws FsError for errors other than 2 and 3.
bool exists(const std::string& path);

// The data of `path`, which may be a directory. Links are always followed, whatever `followLinks`
// is. Calls CreateFileA, without any access right, and GetFileInformationByHandle.
//
// If `path` can't be opened, throws NoSuchFileError for the system's errors 2 and 3 and FsError for
// any other; OsError if what was opened has no such data, as with a pipe or a device.
Stat stat(const std::string& path, bool followLinks = true);

// Whether `path` is a file, neither directory nor device. False also if `stat` fails.
bool isRegularFile(const std::string& path);

// Call DeleteFileA and RemoveDirectoryA. A read-only file or a directory with entries isn't
// removed. Of a link the link itself is removed. Throw FsError.
void removeFile(const std::string& path);
void removeDirectory(const std::string& path);

// Removes a file, or a directory without entries. Throws what `stat` and the two above throw.
void remove(const std::string& path);

// The same, but returns false if `path` doesn't exist, or if another thread or process removes it
// meanwhile; of several that succeed at the same time more than one may return true. Tries again
// for some milliseconds after error 5 (ERROR_ACCESS_DENIED), which a file that is being deleted
// gives.
bool removeIfExists(const std::string& path);

// Creates one directory, with default security. Calls CreateDirectoryA. Throws FileExistsError with
// 183 (ERROR_ALREADY_EXISTS) if there is an entry of that name, NoSuchFileError with 3
// (ERROR_PATH_NOT_FOUND) if a directory on the way to it is missing, else FsError.
void createDirectory(const std::string& path);

// Symbolic links aren't supported. Both throw UsageError.
std::string readLink(const std::string& path);
void createSymlink(const std::string& target, const std::string& link);

// Not implemented for this platform. Both throw RuntimeError with "not implemented".
void setPermissions(const std::string& path, std::uint32_t mode);
void setOwner(const std::string& path, std::uint32_t user, std::uint32_t group);

}  // namespace vek::fs
