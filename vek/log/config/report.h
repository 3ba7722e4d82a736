// Reports on the settings of the log.
#pragma once

#include <string>

namespace vek::log {

// Writes `text` to std::cerr as it stands and, where that is a console, in yellow. Throws OsError
// if colours are on and there is no console (see console_colors.h). For the thread of the entry
// point, and for the server's.
void reportInColor(const std::string& text);

}  // namespace vek::log
