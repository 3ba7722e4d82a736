// Writes levels into logging.conf.
#include <exception>

#include <libconfig.h++>
#include <stdlib.h>

#include "vek/exception.h"
#include "vek/fs/copier.h"
#include "vek/fs/current_directory.h"
#include "vek/log/config/file_check.h"
#include "vek/log/config/report.h"
#include "vek/log/configurator.h"
#include "vek/log/manager.h"

namespace vek::log {

namespace {

void backupConfigFile(const std::string& path) {
    fs::Copier(fs::noEffect | fs::overwriteTarget).copy(path, path + ".bak");
}

// Adds an empty member `name` to `parent`, in place of the old one if there is one.
libconfig::Setting& replaceMember(libconfig::Setting& parent, const char* name,
                                  libconfig::Setting::Type type) {
    if (parent.exists(name)) {
        parent.remove(name);
    }
    return parent.add(name, type);
}

libconfig::Setting& groupIn(libconfig::Setting& parent, const char* name) {
    return parent.exists(name) ? parent[name] : parent.add(name, libconfig::Setting::TypeGroup);
}

}  // namespace

void Configurator::persistConfig() {
    try {
        writeConfig();
    } catch (const Exception&) {
        throw;
    } catch (const std::exception& error) {
        throw RuntimeError(error.what());
    }
}

void Configurator::writeConfig() {
    const std::string target = configPath.empty() ? defaultConfigPath() : configPath;
    // First: after a shutdown this throws, and neither the file nor its backup is touched.
    const std::vector<Manager::LoggerLevel> levels = manager.ownLevels();
    libconfig::Config config;
    if (!configPath.empty()) {
        checkConfigFile(target);
        config.readFile(target.c_str());
        try {
            backupConfigFile(fs::expand(configPath));
        } catch (const FileAccessError& error) {
            reportInColor("Couldn't create backup of '" + configPath + "': " + error.description() +
                          "\n");
        }
    }
    writeLevels(config, levels);
    try {
        config.writeFile(target.c_str());
    } catch (const std::exception&) {
        // GetLastError() as of the failure in the runtime: the exception has overwritten it.
        throw FsError(target, _doserrno);
    }
}

// Writes `levels` and the default level into the group of this process. Everything else stays.
void Configurator::writeLevels(libconfig::Config& config,
                               const std::vector<Manager::LoggerLevel>& levels) const {
    libconfig::Setting& group =
        groupIn(groupIn(config.getRoot(), "processes"), instanceName.c_str());
    libconfig::Setting& loggers = replaceMember(group, "loggers", libconfig::Setting::TypeGroup);
    for (const auto& [name, level] : levels) {
        loggers.add(name, libconfig::Setting::TypeString) = levelName(level);
    }
    replaceMember(group, "default_level", libconfig::Setting::TypeString) = levelName(defaultLevel);
}

}  // namespace vek::log
