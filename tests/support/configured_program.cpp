// configured_program STEP... [-- OPTION...]: a program that logs, as its users write one. With "--"
// it hands a parser to the configurator and parses the options behind it; without, it has no
// options, as the helper. Then it does the steps, in their order:
//
//     configure[=NAME]      configures, under the name NAME
//     report                prints the name, the default level and the sinks
//     level=LOGGER          prints the level of LOGGER, which is made if it isn't there
//     log=LEVEL:LOGGER:TEXT
//     set=LOGGER:LEVEL      and
//     default=LEVEL         change levels, as a client of the log service does
//     persist               writes the levels into the configuration file
//     again                 tries to make a second configurator
//     renew                 destroys the configurator and makes another, without a parser
//     stop                  stops it
//     threads               prints how many threads this process has
//     stay                  never ends
//     wait=PATH             until there is a file PATH
//     run=COMMAND           runs COMMAND by the system's command interpreter
//
// An exception ends it: its class and what() go to the standard output, and the exit code is 9, or
// 8 if it came from the constructor. A step that prints ends its line at once.
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include <cxxabi.h>
#include <tclap/CmdLine.h>

// Needs the other ahead of it.
// clang-format off
#include "vek/base/windows.h"
#include <tlhelp32.h>
// clang-format on
#include "vek/exception.h"
#include "vek/log/configurator.h"
#include "vek/log/logger.h"
#include "vek/log/manager.h"

namespace {

using namespace vek::log;

void print(const std::string& text) {
    std::cout << text << std::endl;
}

std::string flagsOf(const SinkConfig& config) {
    return std::string(config.enabled ? " enabled" : "") + (config.print_pids ? " pids" : "") +
           (config.print_tids ? " tids" : "") + (config.print_time ? " time" : "") +
           " max=" + levelName(config.max_level) +
           " format=" + std::to_string(config.format.size());
}

std::string describe(const Sink& sink) {
    const SinkConfig& config = sink.getConfig();
    if (sink.type() != sinkFile) {
        return sink.id() + flagsOf(config);
    }
    const auto& file = static_cast<const FileSinkConfig&>(config);
    return sink.id() + flagsOf(config) + " path=" + file.path + (file.rotate ? " rotate" : "") +
           " archives=" + std::to_string(file.max_archives) +
           " size=" + std::to_string(file.rotate_size) +
           " interval=" + std::to_string(file.rotate_interval) +
           (file.compress_archives ? " compress" : "");
}

void report(const Configurator& configurator) {
    print("instance " + configurator.getInstanceName());
    print(std::string("default ") + levelName(configurator.getDefaultLevel()));
    Manager::instance().withSinks([](const auto& sinks, std::uint32_t) {
        for (const Sink* const sink : sinks) {
            print(describe(*sink));
        }
    });
}

void printLevel(const std::string& name) {
    const Logger& logger = *Manager::instance().getLogger(name);
    print(name + " " + levelName(logger.level()) + (logger.usesDefault() ? "" : " own"));
}

// Cuts the text up to the first ":" off the front of `text`.
std::string cutField(std::string& text) {
    const std::string field = text.substr(0, text.find(':'));
    text.erase(0, field.size() + 1);
    return field;
}

void tell(const std::exception& error) {
    int status = 0;
    char* const name = abi::__cxa_demangle(typeid(error).name(), nullptr, nullptr, &status);
    print(std::string(name) + ": " + error.what());
    std::free(name);
}

void tryAnother() {
    try {
        const Configurator second(nullptr);
    } catch (const vek::UsageError& error) {
        tell(error);
    }
}

void printThreadCount() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    print("threads " + std::to_string(count));
}

void doStep(std::optional<Configurator>& made, const std::string& step) {
    Configurator& configurator = *made;
    const std::string action = step.substr(0, step.find('='));
    std::string value = action == step ? "" : step.substr(action.size() + 1);
    if (action == "configure") {
        configurator.configure(value);
    } else if (action == "report") {
        report(configurator);
    } else if (action == "level") {
        printLevel(value);
    } else if (action == "log") {
        const Level level = parseLevel(cutField(value));
        Logger& logger = *Manager::instance().getLogger(cutField(value));
        if (logger.level() >= level) {
            logger.emit(level, value);
        }
    } else if (action == "set") {
        const std::string name = cutField(value);
        configurator.setLoggerLevel(name, parseLevel(value));
    } else if (action == "default") {
        configurator.setDefaultLevel(parseLevel(value));
    } else if (action == "persist") {
        configurator.persistConfig();
    } else if (action == "again") {
        tryAnother();
    } else if (action == "renew") {
        made.reset();
        made.emplace(nullptr);
    } else if (action == "threads") {
        printThreadCount();
    } else if (action == "stop") {
        configurator.stop();
    } else if (action == "stay") {
        Sleep(INFINITE);
    } else if (action == "wait") {
        while (GetFileAttributesA(value.c_str()) == INVALID_FILE_ATTRIBUTES) {
            Sleep(5);
        }
    } else if (action == "run") {
        if (std::system(value.c_str()) != 0) {
            throw std::runtime_error(value);
        }
    } else {
        throw std::invalid_argument(step);
    }
}

int run(const std::vector<std::string>& steps, TCLAP::CmdLine* cmd,
        std::vector<std::string> options) {
    int code = 8;
    try {
        std::optional<Configurator> configurator(std::in_place, cmd);
        code = 9;
        if (cmd != nullptr) {
            cmd->parse(options);
        }
        for (const std::string& step : steps) {
            doStep(configurator, step);
        }
        return 0;
    } catch (const std::exception& error) {
        tell(error);
        return code;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const vek::VekPal pal(false, 0, 4, nullptr);
    std::vector<std::string> steps(argv + 1, argv + argc);
    const auto separator = std::find(steps.begin(), steps.end(), "--");
    if (separator == steps.end()) {
        return run(steps, nullptr, {});
    }
    std::vector<std::string> options(separator, steps.end());
    options.front() = "configured_program";
    steps.erase(separator, steps.end());
    TCLAP::CmdLine cmd("A program that logs.", ' ', "1");
    return run(steps, &cmd, options);
}
