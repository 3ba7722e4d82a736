#include "tools/log_application/commands/ps_command.h"

#include <iostream>

#include "tools/log_application/commands/process_output.h"
#include "tools/log_application/finding/discovery.h"
#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/program/console.h"
#include "tools/log_application/show/text_table.h"

namespace log_application {

ExitCode runPs(const Options& options, StopSignal& stop) {
    const std::vector<Process> all = discover(options.selection.hosts, stop);
    std::vector<Process> processes;
    for (const Process& process : all) {
        if (isSelected(options.selection, process)) {
            processes.push_back(process);
        }
    }
    if (processes.empty()) {
        throw nothingFound(options.selection, all);
    }
    TextTable table;
    table.add({"NAME", "PID", "PORT", "ADDRESS"});
    for (const Process& process : processes) {
        const Endpoint& endpoint = process.endpoints.front();
        if (options.output == OutputKind::json) {
            std::cout << processObject(process, endpoint).text() << "\n";
        }
        table.add({process.name, std::to_string(process.pid), std::to_string(endpoint.port),
                   endpoint.address});
    }
    if (options.output == OutputKind::text) {
        table.write(std::cout);
    }
    flushOutput();
    if (all.size() == 1) {
        say(onlyOneVisible);
    }
    return exitDone;
}

}  // namespace log_application
