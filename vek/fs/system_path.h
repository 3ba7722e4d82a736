// How the files of this folder hand a path to the system.
#pragma once

#include <string>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek::fs {

// `path` for a system call. The system ends a path at its first zero byte, so one with a zero byte
// in it would name another file than its owner means: it throws FsError with 123
// (ERROR_INVALID_NAME).
inline const char* systemPath(const std::string& path) {
    if (path.find('\0') != std::string::npos) {
        throw FsError(path, ERROR_INVALID_NAME);
    }
    return path.c_str();
}

}  // namespace vek::fs
