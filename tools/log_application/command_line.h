// The command line of log_application.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/log_application/commands/options.h"

namespace log_application {

// Reads `arguments`, those behind the program's name. If they ask for help, that is written to
// `output` and the result is none. Throws Failure (wrong usage) for what can't be understood; its
// advice names the help that tells more.
std::optional<Options> parseCommandLine(const std::vector<std::string>& arguments,
                                        std::ostream& output);

}  // namespace log_application
