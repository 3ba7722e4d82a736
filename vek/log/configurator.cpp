#include "vek/log/configurator.h"

#include <exception>
#include <iostream>
#include <memory>
#include <utility>

#include "vek/base/format.h"
#include "vek/base/scope_guard.h"
#include "vek/exception.h"
#include "vek/fs/path_text.h"
#include "vek/fs/program_path.h"
#include "vek/log/config/report.h"
#include "vek/log/logger.h"
#include "vek/log/manager.h"
#include "vek/log/sinks/debugger_sink.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/stdout_sink.h"
#include "vek/thread/scope_guard.h"

namespace vek::log {

namespace {

// The defaults of the console's and the debugger's sinks.
SinkConfig bareConfig() {
    SinkConfig config;
    config.print_pids = false;
    config.print_tids = false;
    config.print_time = false;
    return config;
}

SinkConfig initialSyslogConfig() {
    SinkConfig config = bareConfig();
    config.enabled = true;
    config.max_level = INFO;
    return config;
}

// The executable's file name without its extension.
std::string ownName() {
    std::string name = programPath();
    fs::baseName(name);
    return name.substr(0, name.rfind('.'));
}

// Runs one step of the destructor.
template <class Step>
void reportFailure(Step step) {
    try {
        step();
    } catch (const std::exception& error) {
        std::cerr << "Error shutting down the log: " << error.what() << "\n";
    }
}

}  // namespace

std::atomic<std::int32_t> Configurator::instances = 0;

Configurator::Configurator(TCLAP::CmdLineInterface* cmd)
    : stdoutConfig(bareConfig()),
      debuggerConfig(bareConfig()),
      syslogConfig(initialSyslogConfig()),
      options(waitLogApplication, stdoutConfig.print_tids, stdoutConfig.print_time),
      manager(Manager::instance()) {
    // Deliberately not decremented if this constructor throws.
    if (instances.fetch_add(1) != 0) {
        throw UsageError("Attempted to create more than one instance of the Configurator object");
    }
    if (cmd != nullptr) {
        options.addTo(*cmd);
    }
    if (VekPal::current() != nullptr) {
        VekPal::current()->registerForkHandler(*this);
    }
    ScopeGuard<Manager> forget(&manager, [](Manager* known) { known->setConfigurator(nullptr); });
    manager.setConfigurator(this);
    parseEnvironment();
    forget.dismiss();
}

Configurator::~Configurator() {
    reportFailure([this] {
        manager.shutdown();
        // A manager that was never started still has it.
        manager.setConfigurator(nullptr);
    });
    reportFailure([this] { server.stop(); });
    instances.fetch_sub(1);
}

void Configurator::stop() {
    manager.shutdown();
    server.stop();
}

void Configurator::configure(const std::string& name) {
    instanceName = name.empty() ? ownName() : name;
    readConfigFile();
    applyCommandLine();
    createSinks();
    manager.start();
    server.start();
    if (waitLogApplication) {
        std::cerr << "Waiting for log_application program to connect before continuing"
                  << std::endl;
        server.waitForClient();
    }
}

void Configurator::setLoggerLevel(const std::string& name, Level level) {
    {
        const thread::ScopeGuard guard(levelsLock);
        loggerLevels[name] = level;
    }
    // After unlocking: the manager locks its own mutex, and calls applyConfiguredLevel with that
    // mutex held.
    manager.setLoggerLevel(name, level);
}

void Configurator::setDefaultLevel(Level level) {
    manager.setDefaultLevel(level);
    defaultLevel = level;
}

void Configurator::applyConfiguredLevel(Logger& logger) {
    const thread::ScopeGuard guard(levelsLock);
    const auto found = loggerLevels.find(logger.name());
    if (found != loggerLevels.end()) {
        logger.setLevel(found->second, false);
    }
}

void Configurator::afterFork() {
    manager.onFork();
}

void Configurator::applyCommandLine() {
    if (options.log.isSet()) {
        stdoutConfig.enabled = true;
    }
    if (options.logTids.isSet() || options.verboseLog.isSet()) {
        stdoutConfig.print_tids = true;
    }
    if (options.logTime.isSet() || options.verboseLog.isSet()) {
        stdoutConfig.print_time = true;
    }
    if (options.logLevel.isSet()) {
        defaultLevel = parseLevel(options.logLevel.getValue());
    }
    if (options.waitLogApplication.isSet()) {
        waitLogApplication = true;
    }
    for (const std::string& setting : options.category.getValue()) {
        applyCategory(setting);
    }
}

// NAME=LEVEL. Of several for one name the last one counts.
void Configurator::applyCategory(const std::string& setting) {
    const std::size_t separator = setting.find('=');
    if (separator == std::string::npos) {
        std::cerr << format("Missing separator '=' in logger setting '%s'", setting.c_str())
                  << std::endl;
        return;
    }
    const std::string name = setting.substr(0, separator);
    const std::string level = setting.substr(separator + 1);
    try {
        const Level parsed = parseLevel(level);
        const thread::ScopeGuard guard(levelsLock);
        loggerLevels[name] = parsed;
    } catch (const std::exception&) {
        std::cerr << format("Skipping logger setting '%1$s': given level '%2$s' is unrecognized",
                            name.c_str(), level.c_str())
                  << std::endl;
    }
}

void Configurator::createSinks() {
    if (stdoutConfig.enabled) {
        manager.addSink(new StdoutSink(stdoutConfig));
    }
    if (debuggerConfig.enabled) {
        manager.addSink(new DebuggerSink(debuggerConfig));
    }
    for (const auto& [path, config] : fileSinks) {
        // A missing path was reported when the file was read.
        if (!path.empty()) {
            addFileSink(config);
        }
    }
    applyLevels();
}

// Also for a record that isn't enabled: its sink opens no file and writes nothing.
void Configurator::addFileSink(const FileSinkConfig& config) {
    auto sink = std::make_unique<FileSink>(config);
    if (!sink->isGood()) {
        reportInColor(format("File sink at %1$s couldn't be opened!", config.path.c_str()) + "\n");
    }
    manager.addSink(sink.get());
    sink.release();
}

// For existing loggers. New ones get their level by applyConfiguredLevel.
void Configurator::applyLevels() {
    manager.setDefaultLevel(defaultLevel);
    std::map<std::string, Level> levels;
    {
        const thread::ScopeGuard guard(levelsLock);
        levels = loggerLevels;
    }
    for (const auto& [name, level] : levels) {
        manager.setLoggerLevel(name, level);
    }
}

}  // namespace vek::log
