#include "vek/log/manager.h"

namespace vek::log {

Manager& Manager::instance() {
    static Manager manager;
    return manager;
}

Logger* Manager::getLogger(const std::string& name) {
    std::unique_ptr<Logger>& logger = loggersByName[name];
    if (!logger) {
        logger = std::make_unique<Logger>(name, defaultLevel);
    }
    return logger.get();
}

}  // namespace vek::log
