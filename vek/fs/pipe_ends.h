// vek::fs::PipeEnds: the two handles of a pipe, to be taken over by files.
#pragma once

#include "vek/base/windows.h"

namespace vek::fs {

// Owns nothing: whoever creates the pipe closes the ends that no file has taken over.
struct PipeEnds {
    // INVALID_HANDLE_VALUE once an end is closed or taken over.
    HANDLE readEnd = INVALID_HANDLE_VALUE;
    HANDLE writeEnd = INVALID_HANDLE_VALUE;
};

}  // namespace vek::fs
