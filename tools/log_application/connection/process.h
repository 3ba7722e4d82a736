// log_application::Process: a process with a log service.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

struct Process {
    // Empty and 0 if only the endpoint is known, as for --connect.
    std::string name;
    std::uint32_t pid = 0;
    // Where it listens; to be tried in this order. At least one.
    std::vector<Endpoint> endpoints;

    // "demo (4242)", or the endpoint if only that is known. Control characters are escaped.
    std::string label() const {
        return pid == 0 ? endpoints.front().text()
                        : escapeControls(name) + " (" + std::to_string(pid) + ")";
    }
};

}  // namespace log_application
