// Reports on the log's settings.
#pragma once

#include <string>

namespace vek::log {

// Writes `text` to std::cerr, in yellow if that is a console. Throws OsError if colours are on and
// there is no console (see console_colors.h). Called on the thread of the entry point and on the
// server's.
void reportInColor(const std::string& text);

}  // namespace vek::log
