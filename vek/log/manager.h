// vek::log::Manager: the one object through which all log output of a process passes.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/log/level.h"
#include "vek/log/logger.h"

namespace vek::log {

class Manager : public NoCopy {
  public:
    // The manager of this process, built on first use and destroyed at the process's end. Safe from
    // any thread.
    static Manager& instance();

    // The logger `name`, made at the default level if there is none yet. Never null; it belongs to
    // the manager and is valid while that lives. Names are told apart exactly.
    Logger* getLogger(const std::string& name);

    // The level of loggers that are made from now on.
    void setDefaultLevel(Level level) { defaultLevel = level; }

  private:
    Level defaultLevel = INFO;
    std::map<std::string, std::unique_ptr<Logger>> loggersByName;
};

}  // namespace vek::log
