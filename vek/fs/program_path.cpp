#include "vek/fs/program_path.h"

#include <array>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/path_text.h"

namespace vek {

std::string programPath() {
    std::array<char, 260> buffer = {};
    const DWORD length = GetModuleFileNameA(nullptr, buffer.data(), buffer.size());
    if (length == 0) {
        throw OsError(GetLastError());
    }
    if (length == buffer.size()) {
        throw OsError(ERROR_BUFFER_OVERFLOW);
    }
    return std::string(buffer.data(), length);
}

std::string programDirectory() {
    std::string path = programPath();
    fs::removeTrailingSeparators(path);
    fs::dirName(path);
    return path;
}

std::string programName() {
    std::string name = programPath();
    fs::baseName(name);
    return name.substr(0, name.find('.'));
}

}  // namespace vek
