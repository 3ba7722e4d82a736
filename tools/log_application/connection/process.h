// log_application::Process: a process that was found, or named by its endpoint.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

struct Process {
    // Empty and 0 for a process that was named by its endpoint alone.
    std::string name;
    std::uint32_t pid = 0;
    // Where it answers, one or more, to be tried in this order.
    std::vector<Endpoint> endpoints;

    // "demo (4242)", or the endpoint; safe to be shown.
    std::string label() const {
        return pid == 0 ? endpoints.front().text()
                        : escapeControls(name) + " (" + std::to_string(pid) + ")";
    }
};

}  // namespace log_application
