#include "vek/os/directory.h"

#include <array>
#include <cstdint>
#include <cstring>

#include <direct.h>
#include <io.h>

#include "vek/base/windows.h"
#include "vek/os/bounded_text.h"
#include "vek/os/file.h"

namespace vek::os {

namespace {

constexpr char temporaryName[] = "vek-XXXXXX";

constexpr std::size_t createBuffer = 260;
constexpr std::size_t removeBuffer = 256;

using EntryPath = std::array<char, removeBuffer>;

// Puts `path`, a slash and `name` into `joined`. False if they don't fit: the path would be cut
// into that of something else.
bool join(EntryPath& joined, const char* path, const char* name) {
    if (std::strlen(path) + 1 + std::strlen(name) >= joined.size()) {
        return false;
    }
    boundedPrint(joined.data(), joined.size(), "%s/%s", path, name);
    return true;
}

void removeEntry(const char* path, const _finddata_t& entry) {
    const bool isDirectory = (entry.attrib & _A_SUBDIR) != 0;
    // "." and ".." are meant here, and all other directories that begin with a dot are deliberately
    // left alone, too: the removal of the directory above fails then.
    if (isDirectory && entry.name[0] == '.') {
        return;
    }
    EntryPath entryPath;
    if (!join(entryPath, path, entry.name)) {
        return;
    }
    if (isDirectory) {
        removeTree(entryPath.data());
    } else {
        _unlink(entryPath.data());
    }
}

void removeContent(const char* path) {
    EntryPath pattern;
    if (path[0] == '\0' || !join(pattern, path, "*.*")) {
        // An empty path would mean all that the drive holds.
        return;
    }
    _finddata_t entry = {};
    const std::intptr_t find = _findfirst(pattern.data(), &entry);
    if (find == -1) {
        return;
    }
    do {
        removeEntry(path, entry);
    } while (_findnext(find, &entry) == 0);
    _findclose(find);
}

bool makeTemporaryDirectory(char* buffer, std::size_t size) {
    const DWORD length = GetTempPathA(static_cast<DWORD>(size), buffer);
    // For a buffer that is too small the system gives the size that it should have.
    if (length == 0 || length >= size) {
        return false;
    }
    if (buffer[length - 1] != '\\') {
        boundedAppend(buffer, size, "\\");
    }
    if (std::strlen(buffer) + sizeof temporaryName > size) {
        return false;
    }
    boundedAppend(buffer, size, temporaryName);
    return _mktemp(buffer) != nullptr && _mkdir(buffer) == 0;
}

}  // namespace

int tempDirectory(char* buffer, std::size_t size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    if (!makeTemporaryDirectory(buffer, size)) {
        // Not the path of something else, which the caller might clear away later.
        buffer[0] = '\0';
        return 0;
    }
    return 1;
}

int createDirectories(const char* path) {
    if (path == nullptr) {
        return 0;
    }
    const std::size_t length = std::strlen(path);
    if (length < 2) {
        return 1;
    }
    std::array<char, createBuffer> work;
    if (length >= work.size()) {
        return 0;
    }
    work[0] = path[0];
    for (std::size_t i = 1; i < length; ++i) {
        const bool isLast = i + 1 == length;
        work[i] = path[i];
        if (path[i] != '\\' && path[i] != '/' && !isLast) {
            continue;
        }
        // The last byte is kept, and a separator before it gives way for a moment.
        work[isLast ? i + 1 : i] = '\0';
        if (_access(work.data(), 0) != 0 && _mkdir(work.data()) != 0) {
            return 0;
        }
        work[i] = path[i];
    }
    return 1;
}

int createDirectoriesIfMissing(const char* path) {
    return pathExists(path) != 0 ? 1 : createDirectories(path);
}

int removeDirectory(const char* path) {
    return path != nullptr && RemoveDirectoryA(path) != 0 ? 1 : 0;
}

int removeTree(const char* path) {
    if (path == nullptr) {
        return 0;
    }
    removeContent(path);
    return _rmdir(path) == 0 ? 1 : 0;
}

}  // namespace vek::os
