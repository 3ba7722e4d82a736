#include "tools/log_application/finding/discovered.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "vek/log/telegram.h"

namespace log_application {

namespace {

constexpr std::uint32_t highestPort = 65535;
constexpr std::uint32_t highestPid = 0xFFFFFFFF;
constexpr const char* loopback = "127.0.0.1";

// Returns none if `text` isn't an answer to the search `id`.
std::optional<Process> readHello(std::string_view text, std::uint32_t id,
                                 const std::string& sender) {
    vek::log::Telegram telegram;
    try {
        telegram.parse(text);
    } catch (const vek::log::Telegram::ParseError&) {
        return std::nullopt;
    }
    const std::optional<std::uint32_t> pid = parseNumber(telegram.param("pid"), highestPid);
    const std::optional<std::uint32_t> port = parseNumber(telegram.param("tcpport"), highestPort);
    if (telegram.type != "hello" || telegram.param("id") != std::to_string(id) ||
        pid.value_or(0) == 0 || port.value_or(0) == 0) {
        return std::nullopt;
    }
    return Process{telegram.param("name"), *pid, {{sender, static_cast<std::uint16_t>(*port)}}};
}

bool isSame(const Process& one, const Process& other) {
    return one.pid == other.pid && one.endpoints.front().port == other.endpoints.front().port;
}

void addEndpoint(Process& process, const Endpoint& endpoint) {
    std::vector<Endpoint>& known = process.endpoints;
    if (std::ranges::find(known, endpoint) == known.end()) {
        known.insert(endpoint.address == loopback ? known.begin() : known.end(), endpoint);
    }
}

}  // namespace

void Discovered::add(std::string_view text, const std::string& sender, bool isLocal) {
    std::optional<Process> process = readHello(text, id, sender);
    if (!process) {
        return;
    }
    if (isLocal) {
        addEndpoint(*process, {loopback, process->endpoints.front().port});
    }
    const auto known = std::ranges::find_if(
        found, [&process](const Process& other) { return isSame(other, *process); });
    if (known == found.end()) {
        found.push_back(*process);
        return;
    }
    for (const Endpoint& endpoint : process->endpoints) {
        addEndpoint(*known, endpoint);
    }
}

std::vector<Process> Discovered::processes() const {
    std::vector<Process> sorted = found;
    std::ranges::sort(sorted, {}, [](const Process& process) {
        return std::tuple(process.name, process.pid, process.endpoints);
    });
    return sorted;
}

}  // namespace log_application
