#include "vek/fs/path_text.h"

#include <algorithm>
#include <array>

#include "vek/exception.h"

namespace vek::fs {

namespace {

bool hasDrive(const std::string& path) {
    return path.size() >= 2 && path[1] == ':';
}

std::string lastComponent(std::string path) {
    baseName(path);
    return path;
}

std::string parentOf(const std::string& directory) {
    const std::size_t separator = directory.rfind('\\');
    return separator == std::string::npos || directory.size() == 1 ? "."
                                                                   : directory.substr(0, separator);
}

// Whether `drive` ("C:", or empty for none) is one that `directory` isn't on.
bool isOtherDrive(std::string drive, const std::string& directory) {
    std::string present = rootOf(directory).substr(0, 2);
    return !drive.empty() && toLower(drive) != toLower(present);
}

}  // namespace

bool isAbsolute(const std::string& path) {
    return path.starts_with('\\') || (path.size() >= 3 && hasDrive(path) && path[2] == '\\');
}

std::string rootOf(const std::string& path) {
    if (!hasDrive(path)) {
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

std::string& baseName(std::string& path) {
    return path.erase(0, dirLength(path));
}

std::size_t dirLength(const std::string& path) {
    return path.rfind('\\') + 1;  // npos + 1 is 0
}

std::string extension(const std::string& path, bool firstDot) {
    const std::string name = lastComponent(path);
    const std::size_t dot = firstDot ? name.find('.') : name.rfind('.');
    return dot == std::string::npos ? "" : name.substr(dot + 1);
}

std::vector<std::string> extensionParts(const std::string& path) {
    std::vector<std::string> parts;
    split(lastComponent(path), '.', parts, false, false);
    return parts;
}

std::string commonPrefix(const std::string& a, const std::string& b) {
    if (isAbsolute(a) != isAbsolute(b)) {
        return "";
    }
    std::vector<std::string> parts;
    std::vector<std::string> others;
    split(a, '\\', parts, false, true);
    split(b, '\\', others, false, true);
    const auto differing =
        std::mismatch(parts.begin(), parts.end(), others.begin(), others.end()).first;
    parts.erase(differing, parts.end());
    return join(parts);
}

std::string join(const std::vector<std::string>& parts) {
    std::string joined;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        joined += (i == 0 ? "" : "\\") + parts[i];
    }
    return joined;
}

std::string& stripComponents(std::string& path, std::size_t count) {
    for (; count > 0; --count) {
        const std::size_t separator = path.rfind('\\');
        if (separator == std::string::npos) {
            break;
        }
        path.erase(separator);
    }
    return path;
}

std::string expandFrom(const std::string& path, const std::string& directory) {
    const std::string root = rootOf(path);
    if (isAbsolute(path) || (!root.empty() && path.substr(root.size()).starts_with('/'))) {
        return path;
    }
    if (directory.empty() || isOtherDrive(root, directory)) {
        throw RuntimeError("can't expand path, because CWD doesn't exist");
    }
    std::vector<std::string> parts;
    split(path.substr(root.size()), '\\', parts, false, false);
    if (!parts.empty() && parts[0] == ".") {
        parts[0] = directory;
    } else if (!parts.empty() && parts[0] == "..") {
        parts[0] = parentOf(directory);
    } else {
        parts.insert(parts.begin(), directory);
    }
    if (parts.size() > 1 && parts[0].ends_with('\\')) {
        parts[0].pop_back();  // the separator of a drive's root
    }
    return join(parts);
}

std::ptrdiff_t findFirstOf(const std::string& text, const std::string& characters,
                           std::size_t start) {
    std::array<bool, 256> wanted = {};
    for (const char ch : characters) {
        wanted[static_cast<unsigned char>(ch)] = true;
    }
    for (std::size_t i = start; i < text.size(); ++i) {
        if (wanted[static_cast<unsigned char>(text[i])]) {
            return static_cast<std::ptrdiff_t>(i);
        }
    }
    return -1;
}

}  // namespace vek::fs
