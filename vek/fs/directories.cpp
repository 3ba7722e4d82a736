#include "vek/fs/directories.h"

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/dir.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"
#include "vek/fs/system_path.h"
#include "vek/os/entry_name.h"

namespace vek::fs {

namespace {

bool isDirectory(const std::string& path) {
    try {
        return stat(path).isDirectory();
    } catch (const Exception&) {
        return false;
    }
}

// Returns false if another thread or process has created the directory meanwhile.
bool createLevel(const std::string& level) {
    try {
        createDirectory(level);
        return true;
    } catch (const FileExistsError&) {
        if (!isDirectory(level)) {
            throw;
        }
        return false;
    }
}

// Creates the directory that `text` names up to its first zero byte. The whole text must be new.
bool createFirstLevel(const std::string& text) {
    const std::string level = text.c_str();
    if (level.size() < text.size()) {
        return createLevel(level);
    }
    createDirectory(level);
    return true;
}

// The text is cut at its backslashes, from the end, until a level can be created. The cuts are
// marked by zero bytes, which end the text for the system, and are undone one by one. Returns false
// if another thread or process has created the last level meanwhile.
bool createLevels(const std::string& path) {
    std::string text = systemPath(path);
    removeTrailingSeparators(text);
    bool created = false;
    for (bool done = false; !done;) {
        try {
            created = createFirstLevel(text);
            done = true;
        } catch (const NoSuchFileError&) {
            const std::size_t nameStart = dirLength(text);
            if (nameStart == 0) {
                throw;
            }
            text[nameStart - 1] = '\0';
        }
    }
    for (std::size_t mark = text.find('\0'); mark != std::string::npos; mark = text.find('\0')) {
        text[mark] = '\\';
        created = createLevel(text.c_str());
    }
    return created;
}

bool isLink(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(systemPath(path));
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

void removeContent(const std::string& path) {
    Dir dir;
    dir.open(path);
    while (dir.next()) {
        const std::string name = dir.name();
        const std::string entry = path + "\\" + name;
        if (!os::leadsToItself(name.c_str())) {
            throw FsError(entry, ERROR_INVALID_NAME);
        }
        const DWORD attributes = dir.attributes();
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            removeFile(entry);
            continue;
        }
        if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
            removeContent(entry);
        }
        removeDirectory(entry);
    }
    dir.close();  // an open search would keep the directory
}

}  // namespace

void createDirectories(const std::string& path) {
    createLevels(path);
}

bool ensureDirectories(const std::string& path) {
    try {
        return createLevels(path);
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
    std::string entry = path;
    removeTrailingSeparators(entry);  // with one the system would open the target of a link
    if (isLink(entry)) {
        removeDirectory(entry);
        return;
    }
    try {
        removeContent(path);
    } catch (const OsError& error) {
        throw FsError(path, error.code());  // of the search, which names no path
    }
    removeDirectory(path);
}

}  // namespace vek::fs
