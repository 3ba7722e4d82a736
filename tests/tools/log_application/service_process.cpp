#include "tests/tools/log_application/service_process.h"

#include <random>
#include <stdexcept>

#include "tests/support/files.h"
#include "tools/log_application/discovery.h"
#include "vek/base/environment.h"
#include "vek/log/server.h"

namespace log_application_test {

namespace {

// Where the service of the process `pid` answers; 0 if it never does.
std::uint16_t findPort(const std::string& address, DWORD pid) {
    log_application::StopSignal stop;
    for (int i = 0; i < 40; ++i) {
        for (const auto& process :
             log_application::discover({{address, vek::log::Server::discoveryPort}}, stop)) {
            if (process.pid == pid) {
                return process.endpoints.front().port;
            }
        }
    }
    return 0;
}

}  // namespace

std::string ownAddress() {
    std::random_device random;
    std::uniform_int_distribution<int> part(1, 254);
    std::string address = "127";
    for (int i = 0; i < 3; ++i) {
        address += "." + std::to_string(part(random));
    }
    return address;
}

ServiceProcess::ServiceProcess(const std::string& mode, const std::string& processName,
                               const std::string& settings, const std::string& options,
                               const std::string& givenAddress)
    : address(givenAddress.empty() ? ownAddress() : givenAddress),
      configPath(support::temporaryDirectory() + "\\log_application." + address + "." +
                 std::to_string(GetTickCount()) + ".conf") {
    support::writeFile(configPath, "defaults : { discovery_addr = \"" + address + "\";\n" +
                                       settings + "};\nprocesses : {};\n");
    vek::setEnv("LOG_SERVICE_NAME", processName);
    run = std::make_unique<ToolRun>(mode + " -- --logcfg \"" + configPath + "\" " + options,
                                    LOG_SERVICE_PROGRAM);
    port = findPort(address, run->processId());
    if (port == 0) {
        throw std::runtime_error("no log service: " + run->errors());
    }
}

ServiceProcess::~ServiceProcess() {
    run.reset();
    for (const char* const suffix : {"", ".bak"}) {
        DeleteFileA((configPath + suffix).c_str());
    }
}

std::string ServiceProcess::configuration() const {
    return support::readFile(configPath);
}

}  // namespace log_application_test
