#include "vek/fs/special_folders.h"

#include <array>

#include "vek/base/optional_function.h"
#include "vek/base/shared_lib.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/path_text.h"

// Behind windows.h, which it needs.
#include <shlobj.h>

namespace vek::fs {

namespace {

constexpr std::size_t roomForPath = 260;

std::string withoutTrailingSeparators(std::string path) {
    removeTrailingSeparators(path);
    return path;
}

// The shell's library is loaded here alone: as an import of the program it would double the time
// that each start takes.
std::string specialFolder(int csidl) {
    SharedLib shell;
    shell.load("shell32", 0);
    const auto getFolder =
        resolveFunction<decltype(&::SHGetSpecialFolderPathA)>(shell, "SHGetSpecialFolderPathA");
    std::array<char, roomForPath> path = {};
    if (getFolder(nullptr, path.data(), csidl, FALSE) == 0) {
        throw OsError(GetLastError());
    }
    return withoutTrailingSeparators(path.data());
}

}  // namespace

std::string commonAppData() {
    return specialFolder(CSIDL_COMMON_APPDATA);
}

std::string personalDirectory() {
    return specialFolder(CSIDL_PERSONAL);
}

std::string profileDirectory() {
    return specialFolder(CSIDL_PROFILE);
}

std::string temporaryDirectory() {
    std::array<char, roomForPath> path = {};
    const DWORD length = GetTempPathA(static_cast<DWORD>(path.size()), path.data());
    if (length == 0) {
        throw OsError(GetLastError());
    }
    if (length >= path.size()) {
        throw OsError(ERROR_BUFFER_OVERFLOW);
    }
    return withoutTrailingSeparators(std::string(path.data(), length));
}

std::string runtimeDirectory() {
    throw RuntimeError("not implemented");
}

std::string cacheDirectory() {
    throw RuntimeError("not implemented");
}

}  // namespace vek::fs
