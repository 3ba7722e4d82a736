#include "tests/support/files.h"

#include <array>
#include <fstream>
#include <iterator>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace support {

namespace {

bool removeOnce(const std::string& directory) {
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((directory + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return !exists(directory);
    }
    do {
        const std::string name = found.cFileName;
        const std::string path = directory + "\\" + name;
        if (name == "." || name == "..") {
            continue;
        }
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            removeOnce(path);
        } else {
            DeleteFileA(path.c_str());
        }
    } while (FindNextFileA(search, &found) != 0);
    FindClose(search);
    return RemoveDirectoryA(directory.c_str()) != 0;
}

}  // namespace

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw vek::FsError(path, GetLastError());
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void writeFile(const std::string& path, const std::string& contents) {
    std::ofstream file(path, std::ios::binary);
    file << contents;
    file.close();
    if (!file) {
        throw vek::FsError(path, GetLastError());
    }
}

void copyFile(const std::string& from, const std::string& to) {
    if (CopyFileA(from.c_str(), to.c_str(), FALSE) == 0) {
        throw vek::FsError(from + " -> " + to, GetLastError());
    }
}

void makeDirectory(const std::string& path) {
    if (CreateDirectoryA(path.c_str(), nullptr) == 0) {
        throw vek::FsError(path, GetLastError());
    }
}

bool exists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool isReadable(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file) != 0;
}

std::string temporaryDirectory() {
    std::array<char, MAX_PATH> path = {};
    const DWORD length = GetTempPathA(MAX_PATH, path.data());
    return std::string(path.data(), length - 1);
}

bool removeTree(const std::string& directory, unsigned limitMs) {
    return waitUntil([&] { return removeOnce(directory); }, limitMs);
}

bool waitUntil(const std::function<bool()>& condition, unsigned limitMs) {
    const ULONGLONG end = GetTickCount64() + limitMs;
    while (!condition()) {
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(10);
    }
    return true;
}

}  // namespace support
