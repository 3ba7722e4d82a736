#include "tools/log_application/commands/save_command.h"

#include <iostream>

#include "tools/log_application/commands/each_process.h"
#include "tools/log_application/connection/client.h"
#include "tools/log_application/finding/process_finder.h"

namespace log_application {

ExitCode runSave(const Options& options, StopSignal& stop) {
    return forEach(findProcesses(options.selection, true, stop), [&](const Process& process) {
        Client(process, &stop).save();
        std::cout << process.label() << ": the levels are saved\n";
        flushOutput();
    });
}

}  // namespace log_application
