// vek::log::LevelSource: gives new loggers the levels that were set for their names.
#pragma once

namespace vek::log {

class Logger;

// Implemented by the owner of the configured levels. Register it by Manager::setConfigurator.
class LevelSource {
  public:
    // Sets the level of `logger`, if there is one for its name. Called for each new logger, on the
    // thread that makes it, with the manager's mutex held. Must call nothing of the manager.
    virtual void applyConfiguredLevel(Logger& logger) = 0;

  protected:
    ~LevelSource() = default;
};

}  // namespace vek::log
