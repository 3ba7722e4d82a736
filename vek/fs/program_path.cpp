#include "vek/fs/program_path.h"

#include <array>
#include <cstdint>

#include "vek/exception.h"
#include "vek/fs/path_text.h"
#include "vek/os/library.h"

namespace vek {

std::string programPath() {
    std::array<char, 260> directory = {};
    std::array<char, 260> name = {};
    std::uint32_t error = 0;
    if (os::programPathAndName(directory.data(), directory.size(), &error, name.data(),
                               name.size()) == 0) {
        throw OsError(error);
    }
    return fs::withoutLongPathPrefix(std::string(directory.data()) + "\\" + name.data());
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
