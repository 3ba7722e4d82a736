// The help of the whole program. CommandOptions::writeHelp writes that of a command.
#pragma once

#include <ostream>

namespace log_application {

// Writes the list of commands, an example of each, and the exit codes.
void writeHelp(std::ostream& output);

}  // namespace log_application
