// vek::log::ServedSettings: what the log server reads and changes for its clients.
#pragma once

#include <string>

#include "vek/log/level.h"

namespace vek::log {

// All operations are called on the server's thread.
class ServedSettings {
  public:
    // The name of this process. Must not change while the server runs.
    virtual const std::string& getInstanceName() const = 0;

    // Sets the level of the logger `name`, also for a logger that is made later.
    virtual void setLoggerLevel(const std::string& name, Level level) = 0;

    // Sets the default level. Throws UsageError, and changes nothing, for a level that no logger
    // can have.
    virtual void setDefaultLevel(Level level) = 0;
    virtual Level getDefaultLevel() const = 0;

    // Saves the levels that are in force. Throws vek::Exception and nothing else.
    virtual void persistConfig() = 0;

  protected:
    ~ServedSettings() = default;
};

}  // namespace vek::log
