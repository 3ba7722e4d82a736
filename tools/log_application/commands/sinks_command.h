// log_application sinks: shows the sinks of each process.
#pragma once

#include "tools/log_application/commands/options.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// Writes the sinks of each process of the selection to std::cout. A failure of one process is
// reported on std::cerr, and the next process is asked; the result is the worst exit code. Throws
// Failure if there is no process.
ExitCode runSinks(const Options& options, StopSignal& stop);

}  // namespace log_application
