#include "tools/log_application/commands/process_output.h"

#include <iostream>

namespace log_application {

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

}  // namespace log_application
