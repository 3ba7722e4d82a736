// Options for copying and moving files.
#pragma once

#include <cstdint>

namespace vek::fs {

// Bits, combined by |.
enum CopyOptions : std::uint32_t {
    noEffect = 1,         // ignored on this platform
    noFollowSource = 2,   // opens the source with OpenFlags::noFollow
    overwriteTarget = 4,  // replaces an existing target, which is an error otherwise
};

}  // namespace vek::fs
