// log_application_test::ScriptedTables: the port tables of a host as a test describes it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/log_application/finding/port_tables.h"
#include "vek/log/server.h"

namespace log_application_test {

struct ScriptedTables : log_application::PortTables {
    std::optional<std::vector<log_application::HeldPort>> udp =
        std::vector<log_application::HeldPort>();
    std::optional<std::vector<log_application::HeldPort>> tcp =
        std::vector<log_application::HeldPort>();
    std::map<std::uint32_t, std::string> programs;

    // Adds a process that holds the discovery port at `address`.
    void addHolder(std::uint32_t pid, const std::string& program,
                   const std::string& address = "127.0.0.1") {
        udp->push_back({pid, {address, vek::log::Server::discoveryPort}});
        programs[pid] = program;
    }

    void addListener(std::uint32_t pid, std::uint16_t port,
                     const std::string& address = "127.0.0.1") {
        tcp->push_back({pid, {address, port}});
    }

    std::optional<std::vector<log_application::HeldPort>> udpSockets() const override {
        return udp;
    }
    std::optional<std::vector<log_application::HeldPort>> tcpListeners() const override {
        return tcp;
    }
    std::string programName(std::uint32_t pid) const override {
        const auto known = programs.find(pid);
        return known == programs.end() ? "" : known->second;
    }
};

}  // namespace log_application_test
