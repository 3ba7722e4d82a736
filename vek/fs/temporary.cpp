#include "vek/fs/temporary.h"

#include <algorithm>
#include <array>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"
#include "vek/fs/special_folders.h"
#include "vek/fs/system_path.h"

namespace vek::fs {

namespace {

// A longer directory leaves no room for a name; the system may not notice by itself.
constexpr std::size_t longestDirectory = MAX_PATH - 14;

// A name that is being deleted gives ERROR_ACCESS_DENIED for a moment, a directory that nothing may
// be created in gives it for good.
constexpr int attemptsIfDenied = 10;

// The offset of the last component of `path`, behind its last separator of either kind.
std::size_t nameStart(const std::string& path) {
    return std::max(dirLength(path), path.rfind('/') + 1);  // npos + 1 is 0
}

// Waits a moment after `error` if another name may help.
bool mayTryAgain(DWORD error, int attempt) {
    if (error != ERROR_ACCESS_DENIED || attempt == attemptsIfDenied) {
        return false;
    }
    Sleep(1);
    return true;
}

// Creates an empty file beside `path`, which has a directory part, and returns its name.
std::string makeUniqueFile(const std::string& path) {
    const std::size_t directorySize = nameStart(path);
    if (directorySize > longestDirectory) {
        throw FsError(path, ERROR_BUFFER_OVERFLOW);
    }
    const std::string directory = path.substr(0, directorySize);
    const char* const prefix = systemPath(path) + directorySize;
    std::array<char, MAX_PATH> made = {};
    for (int attempt = 1; GetTempFileNameA(directory.c_str(), prefix, 0, made.data()) == 0;
         ++attempt) {
        const DWORD error = GetLastError();
        if (!mayTryAgain(error, attempt)) {
            throw FsError(path, error);
        }
    }
    return made.data();
}

}  // namespace

StreamFile makeTemporary(std::string& path) {
    if (nameStart(path) == 0) {
        path = currentDirectory() + "\\" + path;
    }
    path = makeUniqueFile(path);
    StreamFile file;
    file.open(path, Access::readWrite);
    return file;
}

std::string makeTemporaryDirectory(const std::string& base) {
    const std::string wanted = temporaryDirectory() + "\\" + base;
    for (int attempt = 1;;) {
        std::string path = makeUniqueFile(wanted);
        try {
            removeFile(path);
            createDirectory(path);
            return path;
        } catch (const FileExistsError&) {
            // Another thread or process has taken the name: try the next.
        } catch (const FsError& error) {
            if (!mayTryAgain(error.osError().code(), attempt++)) {
                throw;
            }
        }
    }
}

}  // namespace vek::fs
