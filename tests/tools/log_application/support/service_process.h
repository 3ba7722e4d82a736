// log_application_test::ServiceProcess: a real process with a log service. It listens for discovery
// on all addresses, so that it is found while others run.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tests/tools/log_application/support/tool_run.h"
#include "vek/base/no_copy.h"

namespace log_application_test {

class ServiceProcess : public vek::NoCopy {
  public:
    // Starts log_service_program in `mode` under the name `processName`, and waits until its
    // service answers. `settings` are further lines of its settings in logging.conf; `options` go
    // to its configurator. It has no console, so that a Ctrl-C of a test doesn't reach it.
    ServiceProcess(const std::string& mode, const std::string& processName,
                   const std::string& settings = "", const std::string& options = "");
    ~ServiceProcess();

    // "--connect 127.0.0.1:PORT".
    std::string connect() const { return "--connect 127.0.0.1:" + std::to_string(port); }

    std::string configuration() const;
    const std::string& configurationPath() const { return configPath; }

    ToolRun& process() { return *run; }

    // Ends it by TerminateProcess in the midst of its work, in a way that its peers see it. Wine
    // keeps the sockets of a process for good if it is killed in the moment in which `select` has
    // found one ready and not yet returned. So nothing more is logged first, and what has been
    // logged gets the time to be sent: then `select` waits.
    void kill();

    // "demo (4242)".
    std::string label() const;

    const std::string name;
    std::uint16_t port = 0;

  private:
    const std::string configPath;
    std::unique_ptr<ToolRun> run;
};

// `name` with this test's process id, so that no other test has one like it.
std::string ownName(const std::string& name);

}  // namespace log_application_test
