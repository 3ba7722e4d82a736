// The helper from its command tail to its exit code.
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

// What the two modes have in common once the mode is known: the configuration, the logger, and the
// directory.
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

// Runs the helper on `tail`, the raw rest of its command line. The result is the exit code.
//
// `Pal` and `Configurator` are vek::VekPal and vek::log::Configurator: locals of this function, so
// that they are destroyed in the reverse order when it returns, and not at all when a mode ends the
// process by System::exit.
//
// Any std::exception, also one from the two constructors, is told on std::cerr by its what(),
// without a line end, and gives 0. Anything else passes.
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
