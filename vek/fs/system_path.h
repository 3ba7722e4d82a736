// How this folder passes a path to a system call.
#pragma once

#include <string>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek::fs {

// Returns `path` for a system call, which reads it up to the first zero byte. A path with a zero
// byte would name another file than its owner means: throws FsError with 123 (ERROR_INVALID_NAME).
inline const char* systemPath(const std::string& path) {
    if (path.find('\0') != std::string::npos) {
        throw FsError(path, ERROR_INVALID_NAME);
    }
    return path.c_str();
}

}  // namespace vek::fs
