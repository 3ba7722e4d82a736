#include "spool_watch.h"

#include "vek/auxiliary/ini_reader.h"
#include "vek/base/units.h"
#include "vek/exception.h"
#include "vek/fs/dir.h"
#include "vek/fs/path_text.h"
#include "vek/fs/program_path.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"
#include "vek/proc/program.h"
#include "vek/thread/scope_guard.h"
#include "vek/time/clock.h"

namespace {

vek::log::Logger& logger() {
    // It lives until the log ends.
    static vek::log::Logger& spool = *vek::log::Manager::instance().getLogger("SPOOL");
    return spool;
}

std::uint32_t numberOf(const std::string& key, const std::string& value) {
    try {
        return static_cast<std::uint32_t>(std::stoul(value));
    } catch (const std::exception&) {
        throw vek::RuntimeError("spoolwatch.ini: '" + key + "' is no number: " + value);
    }
}

}  // namespace

Settings readSettings() {
    const std::string programDirectory = vek::programDirectory();
    vek::aux::IniReader ini;
    ini.read(programDirectory + "\\spoolwatch.ini");

    Settings settings;
    for (const auto& [key, value] : ini.entries()) {
        if (key == "directory") {
            settings.directory = vek::fs::expandFrom(value, programDirectory);
        } else if (key == "interval") {
            settings.intervalMs = static_cast<std::int64_t>(vek::parseDuration(value));
        } else if (key == "limit") {
            settings.limit = numberOf(key, value);
        } else if (key == "rounds") {
            settings.rounds = numberOf(key, value);
        }
    }
    if (settings.directory.empty()) {
        throw vek::RuntimeError("spoolwatch.ini has no 'directory'");
    }
    return settings;
}

std::uint32_t countFiles(const std::string& directory) {
    std::uint32_t files = 0;
    vek::fs::Dir dir;
    dir.open(directory);
    while (dir.next()) {
        files += (dir.attributes() & FILE_ATTRIBUTE_DIRECTORY) == 0 ? 1 : 0;
    }
    return files;
}

void SpoolWatch::run() {
    VEK_LOG(logger(), vek::log::INFO, "watching, limit " << settings.limit);
    for (std::uint32_t round = 1; settings.rounds == 0 || round <= settings.rounds; ++round) {
        countOnce();
        if (waitForStop()) {
            VEK_LOG(logger(), vek::log::INFO, "stopped after round " << round);
            return;
        }
    }
    VEK_LOG(logger(), vek::log::INFO, "done");
}

void SpoolWatch::stop() {
    const vek::thread::ScopeGuard guard(stopRequest);
    stopping = true;
    stopRequest.wakeAll();
}

// A directory on a dead network share can block for minutes, so a child looks, not this process.
void SpoolWatch::countOnce() {
    vek::proc::Program child;
    child.setProgram(vek::programPath(), true);
    child.setArguments({"count", settings.directory}, false);
    std::string output, errors;
    if (!child.exchange(nullptr, &output, &errors)) {
        VEK_LOG(logger(), vek::log::ERR, child.commandLine() << ": " << errors);
        return;
    }
    const std::uint32_t files = numberOf("count", output);
    if (files > settings.limit) {
        VEK_LOG(logger(), vek::log::WARN,
                files << " files wait, " << files - settings.limit << " too many");
    } else {
        VEK_LOG(logger(), vek::log::INFO, files << " files wait");
    }
}

bool SpoolWatch::waitForStop() {
    vek::time::MonotonicClock deadline(true);
    deadline += settings.intervalMs;
    const vek::thread::ScopeGuard guard(stopRequest);
    while (!stopping && stopRequest.waitUntil(deadline)) {
    }
    return stopping;
}
