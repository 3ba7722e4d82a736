// vek::log::Configurator: brings the logging of a program up and down. A local of the entry point,
// made right behind vek::VekPal and destroyed right ahead of it.
#pragma once

#include <string>

#include "vek/base/no_copy.h"

namespace TCLAP {
class CmdLineInterface;
}

namespace vek::log {

class Configurator : public NoCopy {
  public:
    // Sets the default level, WARN. `cmd` is the parser that takes the log options, or null; there
    // are no options yet.
    explicit Configurator(TCLAP::CmdLineInterface* cmd);

    // Applies the settings of the process `name`. There are no settings yet.
    void configure(const std::string& name);
};

}  // namespace vek::log
