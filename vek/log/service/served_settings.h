// vek::log::ServedSettings: the settings that the log server reads and changes for its clients.
#pragma once

#include <string>

#include "vek/log/level.h"

namespace vek::log {

// All operations are called on the server's thread.
class ServedSettings {
  public:
    // The name of this process. Constant while the server runs.
    virtual const std::string& getInstanceName() const = 0;

    // Sets the level of the logger `name`, also for a logger that is made later.
    virtual void setLoggerLevel(const std::string& name, Level level) = 0;

    // Sets the default level. Throws UsageError, and changes nothing, if the level isn't allowed as
    // the default.
    virtual void setDefaultLevel(Level level) = 0;
    virtual Level getDefaultLevel() const = 0;

    // Saves the current levels. Throws vek::Exception and nothing else.
    virtual void persistConfig() = 0;

  protected:
    ~ServedSettings() = default;
};

}  // namespace vek::log
