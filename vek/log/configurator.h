// vek::log::Configurator: brings the logging of a program up and down. A local of the entry point,
// made right behind vek::VekPal and destroyed right ahead of it.
#pragma once

#include <map>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/log/level.h"
#include "vek/thread/mutex.h"

namespace TCLAP {
class CmdLineInterface;
}

namespace vek::log {

class Logger;
class Manager;

class Configurator : public NoCopy {
  public:
    // Sets the default level, WARN, and has the manager ask this object for the levels of new
    // loggers. `cmd` is the parser that takes the log options, or null; there are no options yet.
    explicit Configurator(TCLAP::CmdLineInterface* cmd);

    // Shuts the manager down: what was logged has reached the sinks when this returns. Throws
    // nothing; a failure is reported on std::cerr.
    ~Configurator();

    // Applies the settings of the process `name`, and starts the manager. To be called once. There
    // are no settings yet, and so no sinks: what the program doesn't add by itself is written
    // nowhere. Throws as Manager::start does.
    void configure(const std::string& name);

    // Gives the logger `name` a level, also if it is made only later. Safe from any thread.
    void setLoggerLevel(const std::string& name, Level level);

    // Called by the manager, with its mutex held, for each new logger: gives it the level that was
    // set for its name, if there is one, as a level of its own. Deliberately as it stands: DEFAULT
    // isn't translated here.
    void applyConfiguredLevel(Logger& logger);

  private:
    Manager& manager;
    std::map<std::string, Level> loggerLevels;
    // Guards the levels. The innermost lock.
    thread::Mutex levelsLock{true};
};

}  // namespace vek::log
