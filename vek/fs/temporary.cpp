#include "vek/fs/temporary.h"

#include <array>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/operations.h"
#include "vek/fs/special_folders.h"
#include "vek/fs/system_path.h"

namespace vek::fs {

namespace {

constexpr char separators[] = "\\/";

// A longer directory leaves no room for a name; the system may not notice by itself.
constexpr std::size_t longestDirectory = MAX_PATH - 14;

// Makes an empty file beside `path`, which has a directory part, and gives back its name.
std::string makeUniqueFile(const std::string& path) {
    const std::size_t nameStart = path.find_last_of(separators) + 1;
    const std::string directory = path.substr(0, nameStart);
    if (directory.size() > longestDirectory) {
        throw FsError(path, ERROR_BUFFER_OVERFLOW);
    }
    std::array<char, MAX_PATH> made = {};
    if (GetTempFileNameA(directory.c_str(), systemPath(path) + nameStart, 0, made.data()) == 0) {
        throw FsError(path, GetLastError());
    }
    return made.data();
}

}  // namespace

StreamFile makeTemporary(std::string& path) {
    if (path.find_first_of(separators) == std::string::npos) {
        path = currentDirectory() + "\\" + path;
    }
    path = makeUniqueFile(path);
    StreamFile file;
    file.open(path, Access::readWrite);
    return file;
}

std::string makeTemporaryDirectory(const std::string& base) {
    const std::string wanted = temporaryDirectory() + "\\" + base;
    for (;;) {
        const std::string path = makeUniqueFile(wanted);
        removeFile(path);
        try {
            createDirectory(path);
            return path;
        } catch (const FileExistsError&) {
            // Another process has taken the name meanwhile: the next one.
        }
    }
}

}  // namespace vek::fs
