// log_application save: has each process write its levels into its logging.conf.
#pragma once

#include "tools/log_application/commands/options.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// Sends the request to each process of the selection. A failure of one process is reported on
// std::cerr, and the next process is asked; the result is the worst exit code. Throws Failure if
// there is no process.
ExitCode runSave(const Options& options, StopSignal& stop);

}  // namespace log_application
