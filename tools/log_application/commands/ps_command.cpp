#include "tools/log_application/commands/ps_command.h"

#include <algorithm>
#include <iostream>

#include "tools/log_application/commands/process_output.h"
#include "tools/log_application/finding/host_search.h"
#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/program/console.h"
#include "tools/log_application/show/text_table.h"

namespace log_application {

namespace {

// One line for each kind of gap in the table.
void sayWhatIsMissing(const std::vector<Process>& processes) {
    if (std::ranges::any_of(processes, &Process::isProgramName)) {
        say("A name with * is that of the program: the process can't be asked for its own, as "
            "others share its port.");
    }
    if (std::ranges::any_of(processes,
                            [](const Process& process) { return process.endpoints.empty(); })) {
        say(std::string("The system doesn't tell a port that is shown as ?. ") + howToGiveAPort);
    }
}

}  // namespace

ExitCode runPs(const Options& options, StopSignal& stop) {
    const SearchResult found = searchProcesses(options.selection, stop);
    const std::vector<Process>& all = found.processes;
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
        const bool isKnown = !process.endpoints.empty();
        const Endpoint endpoint = isKnown ? process.endpoints.front() : Endpoint();
        if (options.output == OutputKind::json) {
            std::cout << processObject(process, endpoint).text() << "\n";
        }
        table.add({process.shownName(), std::to_string(process.pid),
                   isKnown ? std::to_string(endpoint.port) : "?",
                   isKnown ? endpoint.address : "?"});
    }
    if (options.output == OutputKind::text) {
        table.write(std::cout);
    }
    flushOutput();
    sayWhatIsMissing(processes);
    if (all.size() == 1 && !found.complete) {
        say(onlyOneVisible);
    }
    return exitDone;
}

}  // namespace log_application
