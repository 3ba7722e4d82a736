// Reads logging.conf.
#include <iostream>

#include <libconfig.h++>

#include "vek/base/format.h"
#include "vek/base/text.h"
#include "vek/base/units.h"
#include "vek/exception.h"
#include "vek/fs/program_path.h"
#include "vek/log/config/file_check.h"
#include "vek/log/config/report.h"
#include "vek/log/configurator.h"
#include "vek/thread/scope_guard.h"

namespace vek::log {

namespace {

// Silently ignores settings of the wrong type. Throws UsageError if `max_level` is an unknown
// level.
void parseSinkSettings(const libconfig::Setting& setting, SinkConfig& config) {
    setting.lookupValue("enabled", config.enabled);
    setting.lookupValue("print_time", config.print_time);
    setting.lookupValue("print_tids", config.print_tids);
    setting.lookupValue("print_pids", config.print_pids);
    std::string text;
    if (setting.lookupValue("max_level", text)) {
        config.max_level = parseLevel(text);
    }
    if (setting.lookupValue("format", text)) {
        config.format = compileFormat(text);
    }
}

// Reads a count with a unit by `parse`. The exception for a bad text names the file and the
// setting.
template <class Parse>
std::uint64_t parseUnits(const libconfig::Setting& setting, const std::string& file, Parse parse) {
    const char* const text = setting;
    try {
        return parse(text);
    } catch (const ParseError& error) {
        throw ParseError(file + ": " + setting.getPath(), error.description());
    }
}

void reportSetting(const libconfig::Setting& setting, const char* problem) {
    std::cerr << "veklog config setting " << setting.getPath() << problem << std::endl;
}

}  // namespace

void Configurator::readConfigFile() {
    if (options.logcfg.isSet()) {
        configPath = options.logcfg.getValue();
    } else if (configPath.empty()) {
        configPath = findConfigFile();
    }
    if (configPath.empty()) {
        return;
    }
    if (options.verboseLog.isSet()) {
        std::cout << format("Using veklog config file '%s'", configPath.c_str()) << std::endl;
    }
    // Settings read before the failure count. Deliberately doesn't catch
    // libconfig::FileIOException.
    try {
        parseConfigFile();
    } catch (const Exception& error) {
        reportInColor(error.description() + "\n");
    } catch (const libconfig::ParseException& error) {
        reportInColor(
            format("Couldn't parse libconfig configuration file '%1$s' at line %2$d: '%3$s'.\n",
                   configPath.c_str(), error.getLine(), error.getError()));
    } catch (const libconfig::SettingException& error) {
        // Deliberately without a line end.
        reportInColor(
            format("Invalid setting in libconfig configuration file '%1$s' in element '%2$s': %3$s",
                   configPath.c_str(), error.getPath(), error.what()));
    }
}

void Configurator::parseConfigFile() {
    checkConfigFile(configPath);
    libconfig::Config config;
    config.readFile(configPath.c_str());
    const libconfig::Setting& root = config.getRoot();
    if (root.exists("defaults")) {
        parseSettingsGroup(root["defaults"]);
    }
    if (root.exists("processes")) {
        const libconfig::Setting& processes = root["processes"];
        if (processes.exists(instanceName.c_str())) {
            parseSettingsGroup(processes[instanceName.c_str()]);
        }
    }
    configLoaded = true;
}

void Configurator::parseSettingsGroup(const libconfig::Setting& group) {
    std::string value;
    parseDefaultLevel(group, value);
    group.lookupValue("wait_log_application", waitLogApplication);
    for (const char* const name : {"sink", "evidence"}) {
        if (group.exists(name)) {
            parseSinkGroup(group[name]);
        }
    }
    if (group.exists("loggers")) {
        parseLoggers(group["loggers"], value);
    } else if (group.exists("agents")) {
        parseLoggers(group["agents"], value);
    }
    std::string address;
    if (group.lookupValue("listen_addr", address)) {
        server.setListenAddress(address);
    }
    if (group.lookupValue("discovery_addr", address)) {
        server.setDiscoveryAddress(address);
    }
}

// Sets `value` to the last text that was read.
void Configurator::parseDefaultLevel(const libconfig::Setting& group, std::string& value) {
    for (const char* const name : {"default_level", "default_scope"}) {
        if (!group.lookupValue(name, value)) {
            continue;
        }
        try {
            defaultLevel = parseLevel(value);
        } catch (const Exception&) {
            // Deliberately with this name for both.
            reportInvalidSetting("default_level", value);
        }
    }
}

// Deliberately, a member that is no text uses the text that was read last, and a logger whose text
// is no level is OFF if no earlier source has named it.
void Configurator::parseLoggers(const libconfig::Setting& loggers, std::string& value) {
    if (!loggers.isGroup()) {
        // The elements of a list have no names.
        return;
    }
    for (int i = 0; i < loggers.getLength(); ++i) {
        const std::string name = loggers[i].getName();
        loggers.lookupValue(name, value);
        const thread::ScopeGuard guard(levelsLock);
        Level& level = loggerLevels[name];
        try {
            level = parseLevel(value);
        } catch (const Exception&) {
            reportInvalidSetting(name, value);
        }
    }
}

void Configurator::reportInvalidSetting(const std::string& name, const std::string& value) {
    std::cerr << format("Invalid value for setting \"%1$s\": \"%2$s\"", name.c_str(), value.c_str())
              << std::endl;
}

void Configurator::parseSinkGroup(const libconfig::Setting& group) {
    if (group.exists("stdout")) {
        parseSinkSettings(group["stdout"], stdoutConfig);
    }
    if (group.exists("debugger")) {
        parseSinkSettings(group["debugger"], debuggerConfig);
    }
    if (group.exists("syslog")) {
        parseSinkSettings(group["syslog"], syslogConfig);
    }
    if (group.exists("file")) {
        parseFileSinks(group["file"]);
    }
}

void Configurator::parseFileSinks(const libconfig::Setting& setting) {
    if (setting.getType() == libconfig::Setting::TypeGroup) {
        parseFileSink(setting);
        return;
    }
    if (setting.getType() != libconfig::Setting::TypeList) {
        reportSetting(setting, ": Unexpected type. Expected group {} or a list of groups ({}, {})");
        return;
    }
    for (int i = 0; i < setting.getLength(); ++i) {
        const libconfig::Setting& element = setting[i];
        if (element.getType() == libconfig::Setting::TypeGroup) {
            parseFileSink(element);
        } else {
            reportSetting(element, ": Unexpected type. Expected group {}");
        }
    }
}

void Configurator::parseFileSink(const libconfig::Setting& setting) {
    FileSinkConfig config;
    parseSinkSettings(setting, config);
    setting.lookupValue("path", config.path);
    setting.lookupValue("rotate", config.rotate);
    // Strict: a wrong type ends the reading.
    if (setting.exists("max_archives")) {
        config.max_archives = static_cast<std::uint32_t>(static_cast<int>(setting["max_archives"]));
    }
    if (setting.exists("compress_archives")) {
        config.compress_archives = setting["compress_archives"];
    }
    if (setting.exists("rotate_size")) {
        config.rotate_size = parseUnits(setting["rotate_size"], configPath, parseFileSize) >> 10;
    }
    if (setting.exists("rotate_interval")) {
        config.rotate_interval =
            parseUnits(setting["rotate_interval"], configPath, parseDuration) / 1000;
    }
    if (config.path.empty()) {
        // Entered nevertheless; createSinks skips it.
        reportSetting(setting, ": Missing path for logfile. Ignoring this.");
    }
    expandLogPath(config.path);
    const std::string path = config.path;
    if (!fileSinks.emplace(path, std::move(config)).second) {
        // Deliberately with this text, although nothing is overwritten: the first one counts.
        reportSetting(setting,
                      ": Duplicate configuration for this logfile path. Overwriting settings.");
    }
}

void Configurator::expandLogPath(std::string& path) const {
    expandVariables(
        path,
        {{"base", programName()}, {"exedir", programDirectory()}, {"instancename", instanceName}});
}

}  // namespace vek::log
