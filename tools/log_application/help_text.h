// The help of log_application as a whole; that of a command is CommandOptions::writeHelp.
#pragma once

#include <ostream>

namespace log_application {

void writeHelp(std::ostream& output);

}  // namespace log_application
