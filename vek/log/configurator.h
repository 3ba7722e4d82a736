// vek::log::Configurator: starts and ends the logging of a program. A local variable of the entry
// point, constructed right after vek::VekPal and destroyed right before it.
//
// It collects the settings from four sources, makes sinks and sets levels of the manager
// accordingly, and starts the manager's thread and the log server. From the weakest to the
// strongest the sources are:
//
//     built-in defaults
//     the environment (read by the constructor)
//     logging.conf: first its group `defaults`, then that of this process
//     the options of the command line, if the program passes its parser
//
// docs/configuration.md lists every setting, variable and option.
//
// Errors in settings are reported on std::cerr, since there may be no sink yet, and the program
// goes on. Only the exceptions named below leave this class.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "vek/base/no_copy.h"
#include "vek/log/config/options.h"
#include "vek/log/level.h"
#include "vek/log/level_source.h"
#include "vek/log/manager.h"
#include "vek/log/server.h"
#include "vek/log/service/served_settings.h"
#include "vek/log/sink.h"
#include "vek/log/sinks/file_sink_config.h"
#include "vek/pal.h"
#include "vek/thread/mutex.h"

namespace libconfig {
class Config;
class Setting;
}  // namespace libconfig

namespace vek::log {

class Logger;

// One at a time in a process. Call the constructor, `configure`, `stop` and the destructor on the
// thread of the entry point. The other operations name their threads.
class Configurator final : public IForkHandler,
                           public LevelSource,
                           public ServedSettings,
                           public NoCopy {
  public:
    // Adds the options to `cmd`, which may be null and must otherwise outlive this object, and
    // reads the environment. From then on loggers have the levels of the environment.
    //
    // Throws UsageError, "Attempted to create more than one instance of the Configurator object",
    // while there is another one, and "log manager: bad default level value" if the environment
    // sets DEFAULT as the default level. Deliberately, no other object can be made in this process
    // after either. Throws also OsError if the environment can't be read, NetError if the server
    // can't open its sockets, as without a vek::VekPal, what TCLAP's CmdLineInterface::add throws,
    // and std::bad_alloc.
    explicit Configurator(TCLAP::CmdLineInterface* cmd);

    // Shuts the manager down, so that all messages have reached the sinks when this returns, and
    // stops the server. Throws nothing; failures are reported on std::cerr.
    ~Configurator();

    // Applies the settings of the process `name`, which defaults to the executable's file name
    // without its extension if it is empty, and starts the manager and the server. Call it once,
    // after the command line has been parsed. If the settings say so, it then blocks, without a
    // time-out, until a client has asked for messages.
    //
    // Throws UsageError, "log manager: bad default level value", if a setting sets DEFAULT as the
    // default level; libconfig::FileIOException if logging.conf was found, or named, and can't be
    // opened; FsError if the search for it fails; OsError if the executable's path is too long, and
    // if colours are on and the standard error is no console; and what Manager::start and
    // Server::start throw. Sinks that were added by then stay.
    void configure(const std::string& name);

    // Copies logging.conf to logging.conf.bak and writes the current levels into it, in the group
    // of this process. Called by the server, on its thread. While the manager shuts down, the
    // levels are those that were set; after that it throws RuntimeError, "The log has been shut
    // down.", and touches no file. Throws a vek::Exception also if the file can't be read, parsed
    // or written, and RuntimeError with its what() instead of any other exception.
    void persistConfig() override;

    // Sets the level of the logger `name`, also for one that is made later. DEFAULT makes an
    // existing logger follow the default level. Thread-safe.
    void setLoggerLevel(const std::string& name, Level level) override;

    // Sets the default level. Throws UsageError, and changes nothing, as Manager::setDefaultLevel
    // does. Called by the server, on its thread.
    void setDefaultLevel(Level level) override;

    // The default level. Not thread-safe: for the thread of `setDefaultLevel`.
    Level getDefaultLevel() const override { return defaultLevel; }

    // Shuts the manager down and stops the server, as the destructor does. Throws what they throw.
    void stop();

    // The name of this process in logging.conf. Empty before `configure`, which sets it.
    const std::string& getInstanceName() const override { return instanceName; }

    // Gives `logger` the level that was set for its name, if there is one, as a level of its own.
    // Deliberately doesn't treat DEFAULT specially. Called by the manager, with its mutex held, for
    // each new logger.
    void applyConfiguredLevel(Logger& logger) override;

    // Calls Manager::onFork. Never called: this system has no fork.
    void afterFork() override;

  private:
    // --- the environment ---

    void parseEnvironment();
    // Return whether `name` is the name of such a variable and `value` a level.
    bool parseEnvDefaultLevel(const std::string& name, const std::string& value);
    bool parseEnvCategoryLevel(const std::string& name, const std::string& value);
    static void reportEnvError(const std::string& name, const std::string& value,
                               const char* signature);

    // --- logging.conf ---

    void readConfigFile();
    void parseConfigFile();
    static std::string findConfigFile();
    static std::string defaultConfigPath();
    void parseSettingsGroup(const libconfig::Setting& group);
    void parseDefaultLevel(const libconfig::Setting& group, std::string& value);
    void parseLoggers(const libconfig::Setting& loggers, std::string& value);
    void parseSinkGroup(const libconfig::Setting& group);
    void parseFileSinks(const libconfig::Setting& setting);
    void parseFileSink(const libconfig::Setting& setting);
    void expandLogPath(std::string& path) const;
    static void reportInvalidSetting(const std::string& name, const std::string& value);

    void writeConfig();
    void writeLevels(libconfig::Config& config,
                     const std::vector<Manager::LoggerLevel>& levels) const;

    // --- the command line, and the result of all sources ---

    void applyCommandLine();
    void applyCategory(const std::string& setting);
    void createSinks();
    void addFileSink(const FileSinkConfig& config);
    void applyLevels();

    // The path of logging.conf; empty if there is none.
    std::string configPath;
    // The file was read to its end. Unused.
    bool configLoaded = false;
    Level defaultLevel = WARN;
    // By the expanded path.
    std::map<std::string, FileSinkConfig> fileSinks;
    bool waitLogApplication = false;
    SinkConfig stdoutConfig;
    SinkConfig debuggerConfig;
    // Read from logging.conf. Deliberately has no effect: this system has no such sink.
    SinkConfig syslogConfig;
    ConfiguratorOptions options;
    Manager& manager;
    // By name, also for loggers that are made later.
    std::map<std::string, Level> loggerLevels VEK_GUARDED_BY(levelsLock);
    // Locked last.
    thread::Mutex levelsLock{true};
    std::string instanceName;
    Server server{this};

    static std::atomic<std::int32_t> instances;
};

}  // namespace vek::log
