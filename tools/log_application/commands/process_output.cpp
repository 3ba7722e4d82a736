#include "tools/log_application/commands/process_output.h"

#include <iostream>

namespace log_application {

JsonObject processObject(const Process& process, const Endpoint& endpoint) {
    JsonObject object;
    object.add("name", process.pid == 0 ? std::nullopt : std::optional(process.name));
    object.add("pid", process.pid == 0 ? std::nullopt : std::optional(process.pid));
    const bool isKnown = endpoint.port != 0;
    object.add("address", isKnown ? std::optional(endpoint.address) : std::nullopt);
    object.add("port", isKnown ? std::optional(endpoint.port) : std::nullopt);
    if (process.isProgramName) {
        object.add("name_of_program", true);
    }
    return object;
}

void writeHeading(const Process& process, const Endpoint& endpoint) {
    std::cout << process.label() << (process.pid == 0 ? "" : " at " + endpoint.text()) << "\n";
}

}  // namespace log_application
