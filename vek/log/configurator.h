// vek::log::Configurator: brings the logging of a program up and down. A local of the entry point,
// made right behind vek::VekPal and destroyed right ahead of it.
//
// It gathers the settings from four sources, turns them into sinks and levels of the manager, and
// starts the manager's thread and the log server. From the weakest to the strongest the sources
// are:
//
//     built-in defaults
//     the environment (read by the constructor)
//     logging.conf: first its group `defaults`, then that of this process
//     the options of the command line, where a program hands over its parser
//
// docs/configuration.md lists every setting, variable and option.
//
// What is wrong with a setting is told on std::cerr, since no sink can be relied on yet, and the
// program goes on: only what is said below to be thrown leaves this class.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/log/config/options.h"
#include "vek/log/level.h"
#include "vek/log/level_source.h"
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
class Manager;

// One at a time in a process. The constructor, `configure`, `stop` and the destructor are for the
// thread of the entry point; which thread calls the others is said there.
class Configurator final : public IForkHandler,
                           public LevelSource,
                           public ServedSettings,
                           public NoCopy {
  public:
    // Builds everything, adds the options to `cmd`, which may be null and has to outlive this
    // object otherwise, and reads the environment. Afterwards loggers can be had, at the levels
    // that the environment gives them.
    //
    // Throws UsageError, "Attempted to create more than one instance of the Configurator object",
    // while there is another one, and "log manager: bad default level value" if the environment
    // gives DEFAULT as the default level. Deliberately either counts as an object that lives for
    // ever: no other can be made in this process from then on. Throws besides OsError if the system
    // gives no environment, NetError if the server gets no sockets, as without a vek::VekPal, what
    // TCLAP's CmdLineInterface::add throws, and std::bad_alloc.
    explicit Configurator(TCLAP::CmdLineInterface* cmd);

    // Shuts the manager down, so that what was logged has reached the sinks when this returns, and
    // stops the server. Throws nothing; a failure is reported on std::cerr.
    ~Configurator();

    // Applies the settings of the process `name`, or of the executable's file name without its
    // extension if that is empty, and starts the manager and the server. To be called once, behind
    // the parsing of the command line. If the settings ask for it, waits here, without bound, until
    // a client has asked for the messages.
    //
    // Throws UsageError, "log manager: bad default level value", if a setting gives DEFAULT as the
    // default level; libconfig::FileIOException if logging.conf was found, or named, and can't be
    // opened; FsError if it can't be looked for; OsError for an executable whose path is too long,
    // and where colours are on and the standard error is no console; and what Manager::start and
    // the server's start throw. What was added to the manager by then stays there.
    void configure(const std::string& name);

    // Writes the levels that are in force into logging.conf, as told at `writeConfig`. Called by
    // the server, on its thread. Throws vek::Exception: those of `writeConfig` as they are,
    // RuntimeError with its what() in the place of any other.
    void persistConfig() override;

    // Gives the logger `name` a level, also if it is made only later; with DEFAULT a logger that
    // exists follows the default level. Safe from any thread.
    void setLoggerLevel(const std::string& name, Level level) override;

    // Changes the default level. Throws UsageError, and changes nothing, as
    // Manager::setDefaultLevel does. Called by the server, on its thread.
    void setDefaultLevel(Level level) override;

    // The default level. For the thread of `setDefaultLevel`; no lock guards it.
    Level getDefaultLevel() const override { return defaultLevel; }

    // The two steps that open the destructor. Throws what they throw.
    void stop();

    // The name of this process among those of logging.conf; empty ahead of `configure`, which is
    // the only one to change it.
    const std::string& getInstanceName() const override { return instanceName; }

    // Called by the manager, with its mutex held, for each new logger: gives it the level that was
    // set for its name, if there is one, as a level of its own. Deliberately as it stands: DEFAULT
    // isn't translated here.
    void applyConfiguredLevel(Logger& logger) override;

    // Has the manager renew the process id. Never called: this system has no fork.
    void afterFork() override;

  private:
    // --- the environment ---

    void parseEnvironment();
    // Whether the variable `name` is one of theirs, and its value a level.
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
    void writeLevels(libconfig::Config& config) const;

    // --- the command line, and what comes of all ---

    void applyCommandLine();
    void applyCategory(const std::string& setting);
    void createSinks();
    void addFileSink(const FileSinkConfig& config);
    void applyLevels();

    // Of logging.conf; empty if there is none.
    std::string configPath;
    // It was read to its end. Nothing reads this.
    bool configLoaded = false;
    Level defaultLevel = WARN;
    // By the expanded path.
    std::map<std::string, FileSinkConfig> fileSinks;
    bool waitLogApplication = false;
    SinkConfig stdoutConfig;
    SinkConfig debuggerConfig;
    // Read from logging.conf, and deliberately without effect: there is no such sink here.
    SinkConfig syslogConfig;
    ConfiguratorOptions options;
    Manager& manager;
    // What loggers get that are made later.
    std::map<std::string, Level> loggerLevels;
    // Guards loggerLevels once other threads run. The innermost lock.
    thread::Mutex levelsLock{true};
    std::string instanceName;
    Server server{this};

    static std::atomic<std::int32_t> instances;
};

}  // namespace vek::log
