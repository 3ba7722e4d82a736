// Whether files are open, by what the system says rather than by the values of handles, which it
// gives out again.
#pragma once

#include <string>

#include "vek/base/windows.h"

namespace vek::test {

// Whether `path` exists and nobody has it open.
inline bool isClosed(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(file);
    return true;
}

}  // namespace vek::test
