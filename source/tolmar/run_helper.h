// Runs the helper, from its command tail to its exit code.
#pragma once

#include <exception>
#include <iostream>

#include "source/tolmar/command_tail.h"
#include "source/tolmar/gui_restart.h"
#include "source/tolmar/helper_directory.h"
#include "source/tolmar/service_replacement.h"
#include "source/tolmar/system.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"

namespace tolmar {

// Configures the log, sets the directory and runs `mode`, which is not Mode::nothing. Returns the
// exit code.
template <class Configurator>
int runMode(System& system, Configurator& configurator, const char* tail, Mode mode) {
    const bool replacing = mode == Mode::replace;
    configurator.configure(replacing ? "tolmarhlp" : "tolmarhlp-gui");
    vek::log::Logger& logger =
        *vek::log::Manager::instance().getLogger(replacing ? "TOLMAR_HELPER" : "TOLMAR_GUIHELPER");
    if (replacing) {
        VEK_LOG(logger, vek::log::DEBUG, "start tolmarhlp");
    }
    if (!copyDirectory(tail, mode, helperDirectory)) {
        system.rangeCheckFailure();
    }
    if (replacing) {
        return ServiceReplacement(system, logger).run();
    }
    restartGui(system, logger);
    return 0;
}

// Runs the helper with the command tail `tail`. Returns the exit code.
//
// `Pal` and `Configurator` are vek::VekPal and vek::log::Configurator. Both are locals of this
// function: they are destroyed in reverse order when it returns, and not at all when a mode ends
// the process by System::exit.
//
// For any std::exception, also from the two constructors, it writes what() to std::cerr, without a
// line end, and returns 0. Other exceptions pass.
template <class Pal, class Configurator>
int runHelper(System& system, const char* tail) {
    try {
        Pal pal(false, 0, 4, nullptr);
        Configurator configurator(nullptr);
        const Mode mode = selectMode(tail);
        return mode == Mode::nothing ? 0 : runMode(system, configurator, tail, mode);
    } catch (const std::exception& error) {
        std::cerr << error.what();
        return 0;
    }
}

}  // namespace tolmar
