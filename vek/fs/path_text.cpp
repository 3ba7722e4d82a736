#include "vek/fs/path_text.h"

#include <algorithm>
#include <array>

#include "vek/base/code_page.h"
#include "vek/exception.h"

namespace vek::fs {

namespace {

bool endsInBackslash(const std::string& path) {
    return path.ends_with('\\') && !isTrailByte(path, path.size() - 1);
}

bool endsInSeparator(const std::string& path) {
    return endsInBackslash(path) || path.ends_with('/');
}

// The parts of `path` between its backslashes; with `keepEmpty` the empty ones too.
std::vector<std::string> splitPath(const std::string& path, bool keepEmpty) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= path.size(); ++i) {
        if (i < path.size() && (path[i] != '\\' || isTrailByte(path, i))) {
            continue;
        }
        if (i > start || keepEmpty) {
            parts.push_back(path.substr(start, i - start));
        }
        start = i + 1;
    }
    return parts;
}

bool hasDrive(const std::string& path) {
    return path.size() >= 2 && path[1] == ':';
}

std::string lastComponent(std::string path) {
    baseName(path);
    return path;
}

std::string parentOf(const std::string& directory) {
    const std::size_t separator = lastBackslash(directory);
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
    while (path.size() > shortest && endsInSeparator(path)) {
        path.pop_back();
    }
    return path;
}

std::string& removeLastSeparator(std::string& path) {
    if (endsInSeparator(path)) {
        path.pop_back();
    }
    return path;
}

std::string& dirName(std::string& path) {
    const std::size_t separator = lastBackslash(path);
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
    return lastBackslash(path) + 1;  // npos + 1 is 0
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
    std::vector<std::string> parts = splitPath(a, true);
    const std::vector<std::string> others = splitPath(b, true);
    const auto differing =
        std::mismatch(parts.begin(), parts.end(), others.begin(), others.end()).first;
    parts.erase(differing, parts.end());
    return join(parts);
}

std::vector<std::string> components(const std::string& path) {
    return splitPath(path, false);
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
        const std::size_t separator = lastBackslash(path);
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
    std::vector<std::string> parts = components(path.substr(root.size()));
    if (!parts.empty() && parts[0] == ".") {
        parts[0] = directory;
    } else if (!parts.empty() && parts[0] == "..") {
        parts[0] = parentOf(directory);
    } else {
        parts.insert(parts.begin(), directory);
    }
    if (parts.size() > 1 && endsInBackslash(parts[0])) {
        parts[0].pop_back();  // the separator of a drive's root
    }
    return join(parts);
}

std::string withoutLongPathPrefix(const std::string& path) {
    constexpr std::string_view prefix = "\\\\?\\";
    constexpr std::string_view sharePrefix = "\\\\?\\unc\\";
    if (!path.starts_with(prefix)) {
        return path;
    }
    std::string start = path.substr(0, sharePrefix.size());
    if (toLower(start) == sharePrefix) {
        return "\\\\" + path.substr(sharePrefix.size());
    }
    const std::string rest = path.substr(prefix.size());
    return rootOf(rest).size() == 3 ? rest : path;
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
