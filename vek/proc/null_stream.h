// The null device as a standard stream of a child.
#pragma once

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/null_device.h"

namespace vek::proc {

// The handle of `device` (fs::nullInput, fs::nullOutput), which stays its owner. Throws UsageError
// if it isn't open.
inline HANDLE nullStream(const fs::File* device) {
    if (device == nullptr) {
        throw UsageError("The null device isn't open");
    }
    return device->nativeHandle();
}

}  // namespace vek::proc
