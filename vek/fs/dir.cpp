#include "vek/fs/dir.h"

#include <cstring>
#include <iostream>
#include <utility>

#include "vek/exception.h"
#include "vek/fs/system_path.h"

namespace vek::fs {

Dir::~Dir() {
    try {
        close();
    } catch (const Exception& error) {
        std::cerr << "Error closing directory:" << error.printableText();
    }
}

void Dir::open(const std::string& newPath) {
    std::string opened = newPath;  // the caller's text may be our own
    close();
    const std::string pattern = systemPath(opened) + std::string("\\*");
    findHandle = FindFirstFileA(pattern.c_str(), &entry);
    if (findHandle == INVALID_HANDLE_VALUE) {
        throw FsError(opened, GetLastError());
    }
    firstPending = true;
    path = std::move(opened);
}

void Dir::close() {
    path.clear();
    firstPending = false;
    entry.cFileName[0] = '\0';
    const HANDLE closing = std::exchange(findHandle, INVALID_HANDLE_VALUE);
    if (closing != INVALID_HANDLE_VALUE && FindClose(closing) == 0) {
        throw OsError(GetLastError());
    }
}

bool Dir::next() {
    do {
        if (findHandle == INVALID_HANDLE_VALUE) {
            throw UsageError("invalid directory");
        }
        if (std::exchange(firstPending, false)) {
            continue;
        }
        if (FindNextFileA(findHandle, &entry) == 0) {
            const DWORD error = GetLastError();
            entry.cFileName[0] = '\0';
            if (error == ERROR_NO_MORE_FILES) {
                return false;
            }
            throw OsError(error);
        }
    } while (isDotEntry());
    return true;
}

std::string Dir::name() const {
    return hasEntry() ? entry.cFileName : "";
}

DWORD Dir::attributes() const {
    requireEntry();
    return entry.dwFileAttributes;
}

Stat Dir::stat() const {
    requireEntry();
    return fs::stat(entryPath());
}

void Dir::openEntry(Dir& dir) const {
    if (!hasEntry()) {
        throw UsageError("The Dir object is invalid");
    }
    dir.open(entryPath());
}

bool Dir::isDotEntry() const {
    return std::strcmp(entry.cFileName, ".") == 0 || std::strcmp(entry.cFileName, "..") == 0;
}

bool Dir::hasEntry() const {
    return findHandle != INVALID_HANDLE_VALUE && !firstPending && entry.cFileName[0] != '\0';
}

void Dir::requireEntry() const {
    if (!hasEntry()) {
        throw UsageError("No valid dir or dir entry selected");
    }
}

std::string Dir::entryPath() const {
    return path + "\\" + entry.cFileName;
}

}  // namespace vek::fs
