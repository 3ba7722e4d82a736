#include "vek/fs/directories.h"

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/dir.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"
#include "vek/fs/system_path.h"

namespace vek::fs {

namespace {

bool isDirectory(const std::string& path) {
    try {
        return stat(path).isDirectory();
    } catch (const Exception&) {
        return false;
    }
}

// Makes the directory that `text` names up to its first zero byte. If that isn't all of `text`, it
// is as good if somebody else has made it meanwhile.
void createLevel(const std::string& text) {
    const std::string level = text.c_str();
    try {
        createDirectory(level);
    } catch (const FileExistsError&) {
        if (level.size() == text.size() || !isDirectory(level)) {
            throw;
        }
    }
}

}  // namespace

// The text is cut at its backslashes, from the end, until a level can be made. The cuts are marked
// by zero bytes, which end the text for the system, and are turned back one by one.
void createDirectories(const std::string& path) {
    std::string text = systemPath(path);
    removeTrailingSeparators(text);
    for (bool made = false; !made;) {
        try {
            createLevel(text);
            made = true;
        } catch (const NoSuchFileError&) {
            const std::size_t separator = text.rfind('\\');
            if (separator == std::string::npos) {
                throw;
            }
            text[separator] = '\0';
        }
    }
    for (std::size_t mark = text.find('\0'); mark != std::string::npos; mark = text.find('\0')) {
        text[mark] = '\\';
        createLevel(text);
    }
}

bool ensureDirectories(const std::string& path) {
    try {
        createDirectories(path);
        return true;
    } catch (const FileExistsError&) {
        if (!isDirectory(path)) {
            throw;
        }
        return false;
    }
}

bool isEmptyDirectory(const std::string& path) {
    Dir dir;
    dir.open(path);
    return !dir.next();
}

void removeTree(const std::string& path) {
    if (path.empty()) {
        throw FsError(path, ERROR_PATH_NOT_FOUND);
    }
    Dir dir;
    dir.open(path);
    while (dir.next()) {
        const std::string entry = path + "\\" + dir.name();
        if (dir.stat().isDirectory()) {
            removeTree(entry);
        } else {
            removeFile(entry);
        }
    }
    dir.close();  // an open search would keep the directory
    removeDirectory(path);
}

}  // namespace vek::fs
