// The command-line options of the log, for programs that have a parser.
#pragma once

#include <string>

#include <tclap/CmdLineInterface.h>
#include <tclap/MultiArg.h>
#include <tclap/SwitchArg.h>
#include <tclap/ValueArg.h>
#include <tclap/ValuesConstraint.h>

namespace vek::log {

// The name of the configuration file.
inline const std::string configFileName = "logging.conf";

// No option has a short form, and none is required. Without a parser none is ever set. The members
// are constructed in this order and added to the parser in another, which is that of the parser's
// help; both deliberately.
struct ConfiguratorOptions {
    // The arguments are the defaults of the options waitLogApplication, logTids and logTime.
    ConfiguratorOptions(bool waits, bool printsTids, bool printsTime);

    // Adds the options to `cmd`, which keeps references to them.
    void addTo(TCLAP::CmdLineInterface& cmd);

    // The names of the levels, in upper case only.
    TCLAP::ValuesConstraint<std::string> levelConstraint;
    TCLAP::SwitchArg log;
    TCLAP::SwitchArg waitLogApplication;
    TCLAP::ValueArg<std::string> logLevel;
    TCLAP::MultiArg<std::string> category;
    TCLAP::ValueArg<std::string> logcfg;
    TCLAP::SwitchArg logTids;
    TCLAP::SwitchArg logTime;
    TCLAP::SwitchArg verboseLog;
};

}  // namespace vek::log
