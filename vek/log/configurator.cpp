#include "vek/log/configurator.h"

#include "vek/log/manager.h"

namespace vek::log {

Configurator::Configurator(TCLAP::CmdLineInterface* /*cmd*/) {
    Manager::instance().setDefaultLevel(WARN);
}

void Configurator::configure(const std::string& /*name*/) {}

}  // namespace vek::log
