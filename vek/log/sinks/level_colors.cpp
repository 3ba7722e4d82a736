#include "vek/log/sinks/level_colors.h"

#include <cstddef>

#include "vek/log/level.h"

namespace vek::log {

namespace {

using enum ColorSpec::Code;

// By level.
// clang-format off
constexpr ColorSpec levelColors[INVALID + 1] = {
    //            foreground bright background bright force
    /* OFF     */ {keepColor, false, keepColor, false, false},
    /* ERR     */ {red,       true,  keepColor, false, false},
    /* WARN    */ {yellow,    true,  keepColor, false, false},
    /* INFO    */ {keepColor, false, keepColor, false, false},
    /* DEBUG   */ {green,     false, keepColor, false, false},
    /* TRACE   */ {cyan,      false, black,     false, false},
    /* DEFAULT */ {red,       true,  cyan,      false, false},
    /* INVALID */ {keepColor, false, keepColor, false, false},
};
// clang-format on

}  // namespace

const ColorSpec& levelColor(std::int32_t level) {
    return levelColors[static_cast<std::size_t>(level < OFF || level > INVALID ? INVALID : level)];
}

}  // namespace vek::log
