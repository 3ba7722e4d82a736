// The null device as a child's standard stream.
#pragma once

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/null_device.h"

namespace vek::proc {

// Returns the handle of `device` (fs::nullInput, fs::nullOutput), which still owns it. Throws
// UsageError if `device` is null, that is, not open.
inline HANDLE nullStream(const fs::File* device) {
    if (device == nullptr) {
        throw UsageError("The null device isn't open");
    }
    return device->nativeHandle();
}

}  // namespace vek::proc
