// The command line of log_application.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/log_application/commands/options.h"

namespace log_application {

// Parses `arguments`, which exclude the program's name. If they ask for help, writes it to `output`
// and returns none. Throws Failure (exitUsage) for anything invalid; its advice names the help to
// read.
std::optional<Options> parseCommandLine(const std::vector<std::string>& arguments,
                                        std::ostream& output);

}  // namespace log_application
