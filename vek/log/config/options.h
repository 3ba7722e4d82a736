// The command-line options of the log, for a program that has a parser.
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

// None has a short form, and none is required. Without a parser none is ever set. The members are
// made in this order and added to the parser in another, both deliberately: the latter is what the
// parser's help shows.
struct ConfiguratorOptions {
    // The three flags are the settings that the options of these names change.
    ConfiguratorOptions(bool waits, bool printsTids, bool printsTime);

    // Adds the options to `cmd`, which borrows them.
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
