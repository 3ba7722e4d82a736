// log_application_test::ServiceProcess: a real process with a log service, found at an address of
// its own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tests/tools/log_application/tool_run.h"
#include "vek/base/no_copy.h"

namespace log_application_test {

class ServiceProcess : public vek::NoCopy {
  public:
    // Starts log_service_program in `mode` under the name `processName`, and waits until its
    // service answers. `settings` are further lines of its settings in logging.conf; `options` go
    // to its configurator. It is looked for at `address`, one of its own unless given.
    ServiceProcess(const std::string& mode, const std::string& processName,
                   const std::string& settings = "", const std::string& options = "",
                   const std::string& address = "");
    ~ServiceProcess();

    // "--host ADDRESS", for the tool to look for it.
    std::string host() const { return "--host " + address; }
    // "--connect 127.0.0.1:PORT".
    std::string connect() const { return "--connect 127.0.0.1:" + std::to_string(port); }

    std::string configuration() const;
    const std::string& configurationPath() const { return configPath; }

    ToolRun& process() { return *run; }

    const std::string address;
    std::uint16_t port = 0;

  private:
    const std::string configPath;
    std::unique_ptr<ToolRun> run;
};

// An address of the loopback network that nobody else uses.
std::string ownAddress();

}  // namespace log_application_test
