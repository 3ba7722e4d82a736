#include "tools/log_application/commands/list_commands.h"

#include <iostream>
#include <map>

#include "tools/log_application/commands/each_process.h"
#include "tools/log_application/connection/client.h"
#include "tools/log_application/finding/discovery.h"
#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/show/json_object.h"
#include "tools/log_application/show/text_table.h"

namespace log_application {

namespace {

constexpr const char* followsDefault = "default";

// An object with what is known of the process.
JsonObject processObject(const Process& process, const Endpoint& endpoint) {
    JsonObject object;
    object.add("name", process.pid == 0 ? std::nullopt : std::optional(process.name));
    object.add("pid", process.pid == 0 ? std::nullopt : std::optional(process.pid));
    object.add("address", std::string_view(endpoint.address));
    object.add("port", std::int64_t{endpoint.port});
    return object;
}

void writeHeading(const Process& process, const Endpoint& endpoint) {
    std::cout << process.label() << (process.pid == 0 ? "" : " at " + endpoint.text()) << "\n";
}

void writeLevelTable(const std::string& defaultLevel,
                     const std::map<std::string, std::string>& loggers) {
    TextTable table;
    table.add({"LOGGER", "LEVEL", "WHOSE"});
    table.add({"(default level)", defaultLevel, ""});
    for (const auto& [name, level] : loggers) {
        const bool follows = level == followsDefault;
        table.add({name, follows ? defaultLevel : level, follows ? "default" : "own"});
    }
    table.write(std::cout, "  ");
}

void writeLevelObject(JsonObject object, const std::string& defaultLevel,
                      const std::map<std::string, std::string>& loggers) {
    object.add("default", std::string_view(defaultLevel));
    JsonObject levels;
    for (const auto& [name, level] : loggers) {
        const bool follows = level == followsDefault;
        JsonObject logger;
        logger.add("level", std::string_view(follows ? defaultLevel : level));
        logger.add("own", !follows);
        levels.add(name, logger);
    }
    object.add("loggers", levels);
    std::cout << object.text() << "\n";
}

std::string targetOf(const SinkInfo& sink) {
    return sink.path.empty() ? sink.peer : sink.path;
}

void writeSinkTable(const std::vector<SinkInfo>& sinks) {
    TextTable table;
    table.add({"SINK", "ENABLED", "MAX LEVEL", "OWN FORMAT", "PATH OR PEER"});
    for (const SinkInfo& sink : sinks) {
        table.add({sink.id, sink.enabled, sink.maxLevel, sink.customFormat, targetOf(sink)});
    }
    table.write(std::cout, "  ");
}

void writeSinkObject(JsonObject object, const SinkInfo& sink) {
    object.add("sink", std::string_view(sink.id));
    object.add("enabled", sink.enabled == "true");
    object.add("max_level", std::string_view(sink.maxLevel));
    object.add("own_format", sink.customFormat == "true");
    object.add("path", sink.path.empty() ? std::nullopt : std::optional(sink.path));
    object.add("peer", sink.peer.empty() ? std::nullopt : std::optional(sink.peer));
    std::cout << object.text() << "\n";
}

}  // namespace

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

ExitCode runLevels(const Options& options, StopSignal& stop) {
    return forEach(findProcesses(options.selection, false, stop), [&](const Process& process) {
        Client client(process, &stop);
        const std::string defaultLevel = client.defaultLevel();
        const auto loggers = client.loggers();
        if (options.output == OutputKind::json) {
            writeLevelObject(processObject(process, client.endpoint()), defaultLevel, loggers);
        } else {
            writeHeading(process, client.endpoint());
            writeLevelTable(defaultLevel, loggers);
        }
        flushOutput();
    });
}

ExitCode runSinks(const Options& options, StopSignal& stop) {
    return forEach(findProcesses(options.selection, false, stop), [&](const Process& process) {
        Client client(process, &stop);
        const std::vector<SinkInfo> sinks = client.sinks();
        if (options.output == OutputKind::json) {
            for (const SinkInfo& sink : sinks) {
                writeSinkObject(processObject(process, client.endpoint()), sink);
            }
        } else {
            writeHeading(process, client.endpoint());
            writeSinkTable(sinks);
        }
        flushOutput();
    });
}

ExitCode runSave(const Options& options, StopSignal& stop) {
    return forEach(findProcesses(options.selection, true, stop), [&](const Process& process) {
        Client(process, &stop).save();
        std::cout << process.label() << ": the levels are saved\n";
        flushOutput();
    });
}

}  // namespace log_application
