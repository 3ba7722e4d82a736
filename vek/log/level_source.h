// vek::log::LevelSource: gives new loggers the levels that were set for their names.
#pragma once

namespace vek::log {

class Logger;

// Implemented by whoever holds the configured levels, and known to the manager by setConfigurator.
class LevelSource {
  public:
    // Called for each new logger, on the thread that makes it and with the manager's mutex held:
    // gives `logger` the level that was set for its name, if there is one. Must call nothing of the
    // manager.
    virtual void applyConfiguredLevel(Logger& logger) = 0;

  protected:
    ~LevelSource() = default;
};

}  // namespace vek::log
