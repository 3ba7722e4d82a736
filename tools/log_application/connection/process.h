// log_application::Process: a process with a log service.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

// The advice for a process without endpoints.
inline constexpr const char* howToGiveAPort =
    "Give it by --connect 127.0.0.1:PORT; \"netstat -ano\", run as administrator, shows it.";

struct Process {
    // Empty and 0 if only the endpoint is known, as for --connect.
    std::string name;
    std::uint32_t pid = 0;
    // Where it listens; to be tried in this order. At least one if the pid is 0; empty if the
    // system doesn't tell the port.
    std::vector<Endpoint> endpoints;
    // The process hasn't told its name: `name` is that of its program, without folder and ".exe".
    bool isProgramName = false;

    // "demo", "demo*" for the name of a program, "?" if not even that is known.
    std::string shownName() const {
        return name.empty() && isProgramName ? "?" : name + (isProgramName ? "*" : "");
    }

    // "demo (4242)", or the endpoint if only that is known. Control characters are escaped.
    std::string label() const {
        return pid == 0 ? endpoints.front().text()
                        : escapeControls(shownName()) + " (" + std::to_string(pid) + ")";
    }
};

}  // namespace log_application
