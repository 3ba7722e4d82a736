// Datagrams of the search for processes: the request that a process gets, and the answers that the
// tool gets.
#include <set>

#include "tests/native/fuzz/fuzz.h"
#include "tools/log_application/finding/discovered.h"
#include "vek/exception.h"
#include "vek/log/service/discovery.h"
#include "vek/log/telegram.h"

namespace {

using vek::test::require;

constexpr std::uint32_t searchId = 7;

std::string requestWithId(std::string datagram) {
    return datagram + (datagram.ends_with(":") ? "" : "\x1F") + "id=7";
}

// What a process answers, the tool understands.
void checkRequest(const std::string& datagram, const vek::log::ProcessIdentity& self) {
    try {
        const auto answer = vek::log::answerDiscovery(datagram, self);
        if (!answer) {
            return;
        }
        log_application::Discovered found(searchId);
        found.add(*answer, "10.0.0.1", true);
        vek::log::Telegram telegram;
        telegram.parse(*answer);
        const bool ours = telegram.param("id") == std::to_string(searchId);
        const auto processes = found.processes();
        require(processes.size() == (ours ? 1u : 0u), "an answer to this search is a process");
        if (ours) {
            const log_application::Process& process = processes.front();
            require(process.name == self.name && process.pid == self.pid,
                    "the process tells its name and pid");
            require(
                process.endpoints.size() == 2 &&
                    process.endpoints.front().text() == "127.0.0.1:" + std::to_string(self.tcpPort),
                "and its port, on the loopback address first");
        }
    } catch (const vek::log::Telegram::ParseError&) {
        require(datagram.find(':') == std::string::npos, "a text with a colon is a telegram");
    } catch (const vek::NetError&) {
        require(datagram.find("ip") != std::string::npos, "only an address can be none");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const vek::test::SilentErrors silent;
    FuzzedDataProvider input(data, size);
    vek::log::ProcessIdentity self;
    self.pid = input.ConsumeIntegralInRange<std::uint32_t>(1, 0xFFFFFFFF);
    self.tcpPort = input.ConsumeIntegralInRange<std::uint16_t>(1, 65535);
    self.name = "name";
    log_application::Discovered found(searchId);
    // One datagram a line.
    while (input.remaining_bytes() > 0) {
        const std::string datagram = input.ConsumeRandomLengthString();
        checkRequest(datagram, self);
        checkRequest(requestWithId(datagram), self);
        found.add(datagram, datagram.size() % 2 == 0 ? "10.0.0.1" : "10.0.0.2",
                  datagram.size() % 3 == 0);
    }
    std::set<std::pair<std::uint32_t, std::uint16_t>> seen;
    for (const log_application::Process& process : found.processes()) {
        require(process.pid != 0 && !process.endpoints.empty(), "a process has a pid and a place");
        for (const log_application::Endpoint& endpoint : process.endpoints) {
            require(endpoint.port == process.endpoints.front().port && endpoint.port != 0,
                    "a process has one port");
        }
        require(seen.emplace(process.pid, process.endpoints.front().port).second,
                "each process is there once");
    }
    return 0;
}
