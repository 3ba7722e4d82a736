#include "tests/tools/log_application/support/service_process.h"

#include <atomic>
#include <stdexcept>

#include "tests/support/files.h"
#include "tests/support/turns.h"
#include "tools/log_application/finding/discovery.h"
#include "vek/base/environment.h"

namespace log_application_test {

namespace {

// Where the service of the process `pid` answers; 0 if it never does.
std::uint16_t findPort(DWORD pid) {
    log_application::StopSignal stop;
    for (int i = 0; i < 20; ++i) {
        for (const auto& process : log_application::discover({}, stop)) {
            if (process.pid == pid) {
                return process.endpoints.front().port;
            }
        }
    }
    return 0;
}

std::string ownConfigPath() {
    static std::atomic<int> number = 0;
    return support::temporaryDirectory() + "\\log_application." +
           std::to_string(GetCurrentProcessId()) + "." + std::to_string(++number) + ".conf";
}

}  // namespace

std::string ownName(const std::string& name) {
    return name + "-" + std::to_string(GetCurrentProcessId());
}

ServiceProcess::ServiceProcess(const std::string& mode, const std::string& processName,
                               const std::string& settings, const std::string& options)
    : name(processName), configPath(ownConfigPath()) {
    support::writeFile(configPath, "defaults : { discovery_addr = \"0.0.0.0\";\n" + settings +
                                       "};\nprocesses : {};\n");
    vek::setEnv("LOG_SERVICE_NAME", processName);
    run = std::make_unique<ToolRun>(mode + " -- --logcfg \"" + configPath + "\" " + options,
                                    LOG_SERVICE_PROGRAM, nullptr, DETACHED_PROCESS);
    port = findPort(run->processId());
    if (port == 0) {
        throw std::runtime_error("no log service: " + run->errors());
    }
}

std::string ServiceProcess::label() const {
    return name + " (" + std::to_string(run->processId()) + ")";
}

void ServiceProcess::kill() {
    constexpr int turns = 30;
    run->suspendMainThread();
    for (int i = 0; i < turns; ++i) {
        support::letTurnPass();
    }
    run->terminate();
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
