#include "vek/fs/move.h"

#include <vector>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/copier.h"
#include "vek/fs/operations.h"
#include "vek/fs/system_path.h"

namespace vek::fs {

namespace {

constexpr std::uint32_t copyBufferSize = 64 * 1024;

void renameOrThrow(const std::string& from, const std::string& to, std::uint32_t options) {
    const DWORD flags = (options & overwriteTarget) != 0 ? MOVEFILE_REPLACE_EXISTING : 0u;
    if (MoveFileExA(systemPath(from), systemPath(to), flags) != 0) {
        return;
    }
    const DWORD error = GetLastError();
    if (error == ERROR_NOT_SAME_DEVICE) {
        throw NotSameDeviceError(from, error);
    }
    throw FsError(from, error);
}

void copyContents(const std::string& from, const std::string& to, std::uint32_t options) {
    std::vector<char> buffer(copyBufferSize);
    Copier copier(options);
    copier.setBuffer(buffer.data(), copyBufferSize);
    try {
        copier.copy(from, to);
    } catch (const FsError&) {
        throw;  // One of the two couldn't be opened, so `to` isn't a product of this copy.
    } catch (...) {
        try {
            remove(to);
        } catch (const Exception&) {
            // The first failure counts.
        }
        throw;
    }
}

}  // namespace

void move(const std::string& from, const std::string& to, std::uint32_t options) {
    try {
        renameOrThrow(from, to, options);
    } catch (const FsError& error) {
        throw RuntimeError("Error while moving " + from + " -> " + to, error);
    }
}

void moveAnywhere(const std::string& from, const std::string& to, std::uint32_t options) {
    const Stat moved = stat(from);
    try {
        fs::move(from, to, options);
        return;
    } catch (const RuntimeError& error) {
        if (dynamic_cast<const NotSameDeviceError*>(error.getCause()) == nullptr) {
            throw;
        }
    }
    copyContents(from, to, options);
    if (moved.isDirectory()) {
        removeDirectory(from);
    } else {
        removeFile(from);
    }
}

}  // namespace vek::fs
