#include "vek/os/directory.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <direct.h>
#include <io.h>

#include "vek/base/code_page.h"
#include "vek/base/windows.h"
#include "vek/os/bounded_text.h"
#include "vek/os/entry_name.h"
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

void removeContent(const char* path);

void removeEntry(const char* path, const _finddata_t& entry) {
    const bool isDirectory = (entry.attrib & _A_SUBDIR) != 0;
    // For "." and "..". Other directories whose name begins with a dot are deliberately left alone
    // too: the removal of the directory above fails then.
    if (isDirectory && entry.name[0] == '.') {
        return;
    }
    EntryPath entryPath;
    if (!leadsToItself(entry.name) || !join(entryPath, path, entry.name)) {
        return;
    }
    if (!isDirectory) {
        _unlink(entryPath.data());
        return;
    }
    // _findfirst passes the system's attributes on whole.
    if ((entry.attrib & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        removeContent(entryPath.data());
    }
    _rmdir(entryPath.data());
}

void removeContent(const char* path) {
    EntryPath pattern;
    if (path[0] == '\0' || !join(pattern, path, "*.*")) {
        // An empty path would mean everything on the drive.
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

bool isSeparator(std::string_view path, std::size_t offset) {
    return path[offset] == '/' || (path[offset] == '\\' && !isTrailByte(path, offset));
}

// Copies `path` without the separators at its end, with which the system would open the target of a
// link. False if it is too long, or a root.
bool copyWithoutSeparators(EntryPath& copy, const char* path) {
    std::size_t size = std::strlen(path);
    while (size > 0 && isSeparator(path, size - 1)) {
        --size;
    }
    if (size == 0 || size >= copy.size()) {
        return false;
    }
    boundedCopy(copy.data(), size + 1, path);
    return true;
}

bool isLink(const char* path) {
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Makes a directory of the pattern in `path`, whose last bytes it overwrites. A name that another
// thread or process has taken meanwhile is given up for the next. ERROR_ACCESS_DENIED comes from a
// name that is being deleted, for a moment, or because nothing may be created there.
bool makeUniqueDirectory(char* path) {
    constexpr int attempts = 100;
    constexpr int attemptsIfDenied = 10;
    char* const name = path + std::strlen(path) - (sizeof temporaryName - 1);
    int denied = 0;
    for (int attempt = 0; attempt < attempts && _mktemp(path) != nullptr; ++attempt) {
        if (_mkdir(path) == 0) {
            return true;
        }
        if (errno != EEXIST && (errno != EACCES || ++denied == attemptsIfDenied)) {
            return false;
        }
        Sleep(errno == EACCES ? 1 : 0);
        std::memcpy(name, temporaryName, sizeof temporaryName);
    }
    return false;
}

bool makeTemporaryDirectory(char* buffer, std::size_t size) {
    const DWORD length = GetTempPathA(static_cast<DWORD>(size), buffer);
    // If the buffer is too small the system returns the size that is needed.
    if (length == 0 || length >= size) {
        return false;
    }
    if (buffer[length - 1] != '\\' || isTrailByte(buffer, length - 1)) {
        boundedAppend(buffer, size, "\\");
    }
    if (std::strlen(buffer) + sizeof temporaryName > size) {
        return false;
    }
    boundedAppend(buffer, size, temporaryName);
    return makeUniqueDirectory(buffer);
}

}  // namespace

int tempDirectory(char* buffer, std::size_t size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    if (!makeTemporaryDirectory(buffer, size)) {
        // Not the path of something else, which the caller might remove later.
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
        if (!isLast && !isSeparator(path, i)) {
            continue;
        }
        // The last byte is kept; a separator before it is replaced for a moment.
        work[isLast ? i + 1 : i] = '\0';
        // EEXIST: another thread or process has made it in between.
        if (_access(work.data(), 0) != 0 && _mkdir(work.data()) != 0 && errno != EEXIST) {
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
    EntryPath link;
    if (copyWithoutSeparators(link, path) && isLink(link.data())) {
        return _rmdir(link.data()) == 0 ? 1 : 0;
    }
    removeContent(path);
    return _rmdir(path) == 0 ? 1 : 0;
}

}  // namespace vek::os
