#include "tools/log_application/finding/process_finder.h"

#include <algorithm>

#include "tools/log_application/finding/host_search.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

const char* const onlyOneVisible =
    "Only one process can be seen. Processes share the discovery port of 127.0.0.1, and a question "
    "reaches one of "
    "them only. To see them all, give each discovery_addr = \"0.0.0.0\"; in its logging.conf, or "
    "name it by "
    "--connect HOST:PORT.";

namespace {

constexpr const char* howToBeFound =
    "Does it run, and does it have a log service? Processes share the discovery port of 127.0.0.1, "
    "and a question "
    "reaches one of them only: give each discovery_addr = \"0.0.0.0\"; in its logging.conf, or "
    "name the process by "
    "--connect HOST:PORT. On another host: --host ADDRESS.";

std::string labels(const std::vector<Process>& processes) {
    std::string text;
    for (const Process& process : processes) {
        text += (text.empty() ? "" : ", ") + process.label();
    }
    return text;
}

std::string wanted(const Selection& selection) {
    std::string text;
    const auto add = [&text](const std::string& what) {
        text += (text.empty() ? "" : " or ") + what;
    };
    for (const std::string& name : selection.names) {
        add("the name \"" + escapeControls(name) + "\"");
    }
    for (const std::uint32_t pid : selection.pids) {
        add("the id " + std::to_string(pid));
    }
    return text;
}

}  // namespace

Failure nothingFound(const Selection& selection, const std::vector<Process>& others) {
    if (others.empty()) {
        return Failure(exitNotDone, "No process answers.", howToBeFound);
    }
    return Failure(
        exitNotDone,
        "No process with " + wanted(selection) + " answers; there is " + labels(others) + ".",
        howToBeFound);
}

bool isSelected(const Selection& selection, const Process& process) {
    const bool byName = std::ranges::find(selection.names, process.name) != selection.names.end();
    const bool byPid = std::ranges::find(selection.pids, process.pid) != selection.pids.end();
    return byName || byPid || (selection.names.empty() && selection.pids.empty());
}

std::vector<Process> findProcesses(const Selection& selection, bool toChange, StopSignal& stop) {
    std::vector<Process> processes;
    for (const Endpoint& endpoint : selection.connect) {
        processes.push_back({"", 0, {endpoint}});
    }
    if (!selection.needsDiscovery()) {
        return processes;
    }
    std::vector<Process> others;
    for (Process& process : searchProcesses(selection, stop).processes) {
        (isSelected(selection, process) ? processes : others).push_back(std::move(process));
    }
    if (processes.empty()) {
        throw nothingFound(selection, others);
    }
    if (toChange && selection.isEmpty() && !selection.all && processes.size() > 1) {
        throw Failure(exitUsage, "There are several processes: " + labels(processes) + ".",
                      "Say which by --name or --pid, or give --all.");
    }
    return processes;
}

}  // namespace log_application
