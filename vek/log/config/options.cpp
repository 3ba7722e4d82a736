#include "vek/log/config/options.h"

#include <vector>

#include "vek/base/format.h"
#include "vek/log/level.h"

namespace vek::log {

namespace {

std::vector<std::string> levelNames() {
    std::vector<std::string> names;
    for (int level = OFF; level <= DEFAULT; ++level) {
        names.emplace_back(levelName(static_cast<Level>(level)));
    }
    return names;
}

}  // namespace

ConfiguratorOptions::ConfiguratorOptions(bool waits, bool printsTids, bool printsTime)
    : levelConstraint(levelNames()),
      log("", "log", "log messages will be output to stdout.", false),
      waitLogApplication("", "wait-log-application",
                         "Causes the process initialization to wait until the 'log' program "
                         "connected to the veklog facility of the program. This is useful for "
                         "being able to get messages from early startup.",
                         waits),
      logLevel("", "log-level", "The default level to apply for loggers.", false, "WARN",
               &levelConstraint),
      category("", "category", "One or more Category level settings for veklog.", false,
               "CATEGORY=level"),
      logcfg("", "logcfg",
             format("An individual path to a log configuration file. By default a file named '%s' "
                    "is looked for.",
                    configFileName.c_str()),
             false, "", "file system path"),
      logTids("", "log-tids",
              "log messages output due to --log will contain the thread ID of the thread that "
              "generated the message.",
              printsTids),
      logTime("", "log-time",
              "log messages output due to --log will contain the time of message generation.",
              printsTime),
      verboseLog("", "verbose-log", "implies --log-time and --log-tids.", false) {}

void ConfiguratorOptions::addTo(TCLAP::CmdLineInterface& cmd) {
    cmd.add(logLevel);
    cmd.add(waitLogApplication);
    cmd.add(category);
    cmd.add(logcfg);
    cmd.add(log);
    cmd.add(logTids);
    cmd.add(logTime);
    cmd.add(verboseLog);
}

}  // namespace vek::log
