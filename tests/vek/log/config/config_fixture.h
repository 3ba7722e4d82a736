// Runs of configured_program (see there), each a fresh process with a command line, an environment
// and a configuration file of its own.
#pragma once

#include <string>
#include <vector>

#include "tests/support/program_run.h"
#include "tests/vek/temporary_directory.h"

namespace vek::test {

using support::Environment;
using support::ProgramOutput;
using Words = std::vector<std::string>;

class ConfigTest : public TemporaryDirectoryTest {
  protected:
    // Runs the program with `steps`, and with `options` behind the name of the configuration file.
    ProgramOutput run(const Words& steps, const Words& options = {},
                      const Environment& environment = {}) const {
        Words arguments = steps;
        arguments.insert(arguments.end(), {"--", "--logcfg", path("logging.conf")});
        arguments.insert(arguments.end(), options.begin(), options.end());
        return support::runProgram(CONFIGURED_PROGRAM, arguments, environment);
    }

    // The same with `text` as the configuration file.
    ProgramOutput runWith(const std::string& text, const Words& steps, const Words& options = {},
                          const Environment& environment = {}) const {
        writeFile("logging.conf", text);
        return run(steps, options, environment);
    }

    // What it prints on a good run with `text` as the settings of all processes.
    std::string outputWith(const std::string& text, const Words& steps = {"configure=p", "report"},
                           const Words& options = {}, const Environment& environment = {}) const {
        return goodOutput(runWith("defaults = { " + text + " };", steps, options, environment));
    }

    static std::string goodOutput(const ProgramOutput& run) {
        EXPECT_EQ(run.exitCode, 0u);
        EXPECT_EQ(run.error, "");
        return run.output;
    }

    // A run without a parser and without a configuration file.
    static ProgramOutput runBare(const Words& steps, const Environment& environment = {}) {
        return support::runProgram(CONFIGURED_PROGRAM, steps, environment);
    }
};

// What a step prints of a sink of the configuration with nothing but `enabled` and `path`.
inline std::string plainFileSink(int number, const std::string& path) {
    return "file#" + std::to_string(number) +
           " enabled pids tids time max=INVALID format=0 path=" + path +
           " archives=3 size=5120 interval=604800 compress\n";
}

// `path` as it is written in a configuration file.
inline std::string escaped(std::string path) {
    for (std::size_t at = 0; (at = path.find('\\', at)) != std::string::npos; at += 2) {
        path.insert(at, 1, '\\');
    }
    return path;
}

}  // namespace vek::test
