// log_application ps: lists the processes.
#pragma once

#include "tools/log_application/commands/options.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// Writes a row for each process of the selection to std::cout. Throws Failure if there is none.
ExitCode runPs(const Options& options, StopSignal& stop);

}  // namespace log_application
