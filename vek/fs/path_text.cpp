#include "vek/fs/path_text.h"

namespace vek::fs {

std::string rootOf(const std::string& path) {
    if (path.size() < 2 || path[1] != ':') {
        return "";
    }
    return path.substr(0, path.size() >= 3 && path[2] == '\\' ? 3 : 2);
}

std::string& removeTrailingSeparators(std::string& path) {
    const std::size_t shortest = rootOf(path).size();
    while (path.size() > shortest && (path.back() == '\\' || path.back() == '/')) {
        path.pop_back();
    }
    return path;
}

std::string& dirName(std::string& path) {
    const std::size_t separator = path.rfind('\\');
    if (separator == std::string::npos) {
        path = ".";
    } else {
        path.erase(separator);
    }
    return path;
}

}  // namespace vek::fs
