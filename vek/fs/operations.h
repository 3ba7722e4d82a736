// Operations on the entries of directories, by their paths.
//
// A path with a zero byte in it is refused by FsError with 123 (ERROR_INVALID_NAME). Safe from any
// thread, as far as the system's own operations are.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/windows.h"

namespace vek::fs {

// What the system tells of a file or directory.
struct Stat : BY_HANDLE_FILE_INFORMATION {
    bool isDirectory() const { return (dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
};

// Whether there is an entry of that name, of any kind. The name may have wildcards; with a
// separator at its end it is found nowhere, which includes a drive's root ("C:\"). Stands on
// FindFirstFileA. Throws FsError for errors other than 2 and 3.
bool exists(const std::string& path);

// What the system tells of `path`, a directory included. `followLinks` has no effect, as there are
// no links here. Stands on CreateFileA, without any access, and GetFileInformationByHandle.
//
// Throws NoSuchFileError, which is an FsError, if the system's error is 2 or 3, and FsError for any
// other where `path` can't be opened; OsError if what is opened can't be asked, such as a pipe.
Stat stat(const std::string& path, bool followLinks = true);

// Whether `path` is a file, that is neither directory nor device. False also if it can't be found
// out.
bool isRegularFile(const std::string& path);

// Stand on DeleteFileA and RemoveDirectoryA, which remove no read-only file and no directory with
// anything in it. Throw FsError.
void removeFile(const std::string& path);
void removeDirectory(const std::string& path);

// Removes a file, or a directory without entries. Throws what `stat` and the two above throw.
void remove(const std::string& path);

// The same, for what may be missing already: the result is false if it is.
bool removeIfExists(const std::string& path);

// Makes one directory, with default security. Stands on CreateDirectoryA. Throws FileExistsError
// with 183 (ERROR_ALREADY_EXISTS) if there is an entry of that name, NoSuchFileError with 3
// (ERROR_PATH_NOT_FOUND) if a directory on the way to it is missing, else FsError.
void createDirectory(const std::string& path);

// There are no symbolic links here. Both throw UsageError.
std::string readLink(const std::string& path);
void createSymlink(const std::string& target, const std::string& link);

// Not made for this platform. Both throw RuntimeError with "not implemented".
void setPermissions(const std::string& path, std::uint32_t mode);
void setOwner(const std::string& path, std::uint32_t user, std::uint32_t group);

}  // namespace vek::fs
