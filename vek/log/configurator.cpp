#include "vek/log/configurator.h"

#include <exception>
#include <iostream>

#include "vek/log/logger.h"
#include "vek/log/manager.h"
#include "vek/thread/scope_guard.h"

namespace vek::log {

Configurator::Configurator(TCLAP::CmdLineInterface* /*cmd*/) : manager(Manager::instance()) {
    manager.setConfigurator(this);
    manager.setDefaultLevel(WARN);
}

Configurator::~Configurator() {
    try {
        manager.shutdown();
        // A manager that was never started has kept it.
        manager.setConfigurator(nullptr);
    } catch (const std::exception& error) {
        std::cerr << "Error shutting down the log: " << error.what() << "\n";
    }
}

void Configurator::configure(const std::string& /*name*/) {
    manager.start();
}

void Configurator::setLoggerLevel(const std::string& name, Level level) {
    {
        const thread::ScopeGuard guard(levelsLock);
        loggerLevels[name] = level;
    }
    // Behind the lock: the manager takes its own, and asks for levels while it holds that.
    manager.setLoggerLevel(name, level);
}

void Configurator::applyConfiguredLevel(Logger& logger) {
    const thread::ScopeGuard guard(levelsLock);
    const auto found = loggerLevels.find(logger.name());
    if (found != loggerLevels.end()) {
        logger.setLevel(found->second, false);
    }
}

}  // namespace vek::log
