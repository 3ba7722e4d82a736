// The commands that ask or tell each process one thing: ps, levels, sinks, save.
#pragma once

#include "tools/log_application/commands/options.h"
#include "tools/log_application/program/exit_code.h"
#include "tools/log_application/program/stop_signal.h"

namespace log_application {

// Each writes its result to std::cout and what goes wrong with one process to std::cerr, and goes
// on with the next; the result is the worst exit code. Throw Failure if there is no process.
ExitCode runPs(const Options& options, StopSignal& stop);
ExitCode runLevels(const Options& options, StopSignal& stop);
ExitCode runSinks(const Options& options, StopSignal& stop);
ExitCode runSave(const Options& options, StopSignal& stop);

}  // namespace log_application
