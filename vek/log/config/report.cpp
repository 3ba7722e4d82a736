#include "vek/log/config/report.h"

#include <iostream>

#include "vek/base/console_colors.h"

namespace vek::log {

namespace {

constexpr ColorSpec errorColor = {.foreground = ColorSpec::yellow};

}  // namespace

void reportInColor(const std::string& text) {
    applyColor(std::cerr, errorColor);
    std::cerr << text;
    resetColor(std::cerr, {.force = errorColor.force});
}

}  // namespace vek::log
