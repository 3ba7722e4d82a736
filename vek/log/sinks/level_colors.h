// The colour in which a console shows the messages of a level.
#pragma once

#include <cstdint>

#include "vek/base/console_colors.h"

namespace vek::log {

// The colour of `level`; for a number that is no level that of INVALID, which touches nothing. The
// result lives for ever, and stands before any code runs. Safe from any thread; throws nothing.
const ColorSpec& levelColor(std::int32_t level);

}  // namespace vek::log
