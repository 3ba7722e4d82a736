// What copying and moving a file can be told.
#pragma once

#include <cstdint>

namespace vek::fs {

// The bits are combined by |.
enum CopyOptions : std::uint32_t {
    noEffect = 1,         // nothing, on this platform
    noFollowSource = 2,   // opens the source with OpenFlags::noFollow
    overwriteTarget = 4,  // a target that exists is replaced; without it, it is an error
};

}  // namespace vek::fs
