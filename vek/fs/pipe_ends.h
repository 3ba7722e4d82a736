// vek::fs::PipeEnds: the two handles of a pipe, as files take them over.
#pragma once

#include "vek/base/windows.h"

namespace vek::fs {

// Owns nothing: who makes the pipe sees to the ends that nobody has taken.
struct PipeEnds {
    // INVALID_HANDLE_VALUE once an end is closed or taken over.
    HANDLE readEnd = INVALID_HANDLE_VALUE;
    HANDLE writeEnd = INVALID_HANDLE_VALUE;
};

}  // namespace vek::fs
