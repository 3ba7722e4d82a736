// The console colour of each level.
#pragma once

#include <cstdint>

#include "vek/base/console_colors.h"

namespace vek::log {

// Returns the colour of `level`; for a number that is no level that of INVALID, which changes
// nothing. The result is in static storage, initialised at compile time. Thread-safe. Throws
// nothing.
const ColorSpec& levelColor(std::int32_t level);

}  // namespace vek::log
