#include "vek/fs/glob.h"

#include <algorithm>
#include <array>

#include "vek/base/scope_guard.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/path_text.h"
#include "vek/fs/system_path.h"
#include "vek/os/file.h"

namespace vek::fs {

namespace {

void endSearch(HANDLE* search) {
    os::findClose(*search);
}

// What precedes each name found.
std::string directoryOf(std::string pattern) {
    if (dirLength(pattern) == 0) {
        return "";
    }
    dirName(pattern);
    return pattern.empty() ? "" : pattern + "\\";
}

}  // namespace

std::vector<std::string> glob(const std::string& pattern, bool sorted) {
    std::string searched = pattern;
    removeTrailingSeparators(searched);
    const std::string directory = directoryOf(searched);
    std::vector<std::string> found;
    std::array<char, os::findNameSize> name;
    HANDLE search = INVALID_HANDLE_VALUE;
    if (os::findFirst(&search, systemPath(searched), name.data(), nullptr, nullptr, nullptr) == 0) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND) {
            return found;
        }
        throw FsError(pattern, error);
    }
    const ScopeGuard<HANDLE> closing(&search, &endSearch);
    do {
        found.push_back(directory + name.data());
    } while (os::findNext(search, name.data(), nullptr, nullptr, nullptr) != 0);
    if (const DWORD error = GetLastError(); error != ERROR_NO_MORE_FILES) {
        throw OsError(error);
    }
    if (sorted) {
        std::sort(found.begin(), found.end());
    }
    return found;
}

}  // namespace vek::fs
