#include "tools/log_application/commands/sinks_command.h"

#include <iostream>
#include <string>
#include <vector>

#include "tools/log_application/commands/each_process.h"
#include "tools/log_application/commands/process_output.h"
#include "tools/log_application/connection/client.h"
#include "tools/log_application/finding/process_finder.h"
#include "tools/log_application/show/text_table.h"

namespace log_application {

namespace {

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

}  // namespace log_application
