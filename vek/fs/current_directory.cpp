#include "vek/fs/current_directory.h"

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/path_text.h"
#include "vek/fs/system_path.h"

namespace vek::fs {

std::string currentDirectory() {
    std::string directory(MAX_PATH, '\0');
    for (;;) {
        const auto room = static_cast<DWORD>(directory.size());
        const DWORD length = GetCurrentDirectoryA(room, directory.data());
        if (length == 0) {
            throw OsError(GetLastError());
        }
        directory.resize(length);
        if (length < room) {
            return directory;
        }
    }
}

void changeDirectory(const std::string& path) {
    if (SetCurrentDirectoryA(systemPath(path)) == 0) {
        throw FsError(path, GetLastError());
    }
}

std::string expand(const std::string& path) {
    std::string directory;
    try {
        directory = currentDirectory();
        removeTrailingSeparators(directory);
    } catch (const Exception&) {
        // Without one, only an absolute path can be expanded.
    }
    return expandFrom(path, directory);
}

}  // namespace vek::fs
