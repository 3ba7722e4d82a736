#include "tools/log_application/finding/host_search.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "tools/log_application/connection/client.h"
#include "tools/log_application/finding/discovery.h"
#include "vek/base/windows.h"
#include "vek/log/server.h"

namespace log_application {

namespace {

constexpr const char* allAddresses = "0.0.0.0";
constexpr const char* loopback = "127.0.0.1";

// Where this host reaches a port that is bound to `bound`.
Endpoint reachable(const Endpoint& bound) {
    return bound.address == allAddresses ? Endpoint{loopback, bound.port} : bound;
}

// The processes of this host that hold the discovery port, in no order, each with one entry for
// each of its sockets.
struct Holders {
    std::vector<HeldPort> sockets;
    bool complete = false;  // the system knows the process of each socket
};

Holders holdersOfDiscoveryPort(const PortTables& tables) {
    Holders holders;
    const auto sockets = tables.udpSockets();
    if (!sockets) {
        return holders;
    }
    holders.complete = true;
    for (const HeldPort& socket : *sockets) {
        if (socket.endpoint.port != vek::log::Server::discoveryPort) {
            continue;
        }
        if (socket.pid == 0) {
            holders.complete = false;
        } else {
            holders.sockets.push_back(socket);
        }
    }
    return holders;
}

bool isOfThisHost(const Process& process) {
    return process.endpoints.front().isLoopback();
}

// The holders that are not among `found`.
std::vector<HeldPort> hidden(const Holders& holders, const std::vector<Process>& found) {
    std::vector<HeldPort> missing;
    for (const HeldPort& socket : holders.sockets) {
        if (!std::ranges::any_of(found, [&socket](const Process& process) {
                return process.pid == socket.pid && isOfThisHost(process);
            })) {
            missing.push_back(socket);
        }
    }
    return missing;
}

// Adds the answers of the holders to a request with their pid. It reaches those that hold the port
// at an address of their own.
void askByPid(std::vector<Process>& found, const std::vector<HeldPort>& missing, StopSignal& stop) {
    DiscoveryQuestion question;
    std::set<Endpoint> places;
    for (const HeldPort& socket : missing) {
        places.insert(reachable(socket.endpoint));
        question.pids.push_back(socket.pid);
    }
    question.places.assign(places.begin(), places.end());
    question.rounds = 2;
    question.timeMs = hiddenTimeMs;
    for (Process& process : discoverWith(question, stop)) {
        const bool isWanted = std::ranges::find(question.pids, process.pid) != question.pids.end();
        const bool isKnown = std::ranges::find(found, process.pid, &Process::pid) != found.end();
        if (isWanted && !isKnown && isOfThisHost(process)) {
            found.push_back(std::move(process));
        }
    }
}

// Whether a log service answers there.
bool isLogService(const Endpoint& endpoint, StopSignal& stop) {
    try {
        Client client({"", 0, {endpoint}}, &stop, portTimeMs);
        client.defaultLevel();
        return true;
    } catch (const Failure&) {
        return false;
    }
}

Process processOf(std::uint32_t pid, const std::vector<HeldPort>& listeners,
                  const PortTables& tables, StopSignal& stop) {
    Process process;
    process.pid = pid;
    process.name = tables.programName(pid);
    process.isProgramName = true;
    for (const HeldPort& listener : listeners) {
        const Endpoint endpoint = reachable(listener.endpoint);
        if (listener.pid == pid && !stop.isRequested() && isLogService(endpoint, stop)) {
            process.endpoints = {endpoint};
            break;
        }
    }
    return process;
}

}  // namespace

SearchResult searchProcesses(const Selection& selection, StopSignal& stop) {
    SearchResult result;
    result.processes = discover(selection.hosts, stop);
    if (!selection.hosts.empty()) {
        return result;
    }
    const PortTables& tables = *selection.tables;
    const Holders holders = holdersOfDiscoveryPort(tables);
    result.complete = holders.complete;
    if (!hidden(holders, result.processes).empty()) {
        askByPid(result.processes, hidden(holders, result.processes), stop);
    }
    std::set<std::uint32_t> pids;
    for (const HeldPort& socket : hidden(holders, result.processes)) {
        pids.insert(socket.pid);
    }
    if (!pids.empty()) {
        const auto listeners = tables.tcpListeners().value_or(std::vector<HeldPort>());
        for (const std::uint32_t pid : pids) {
            result.processes.push_back(processOf(pid, listeners, tables, stop));
        }
    }
    std::ranges::sort(result.processes, {}, [](const Process& process) {
        return std::tuple(process.name, process.pid, process.endpoints);
    });
    return result;
}

}  // namespace log_application
