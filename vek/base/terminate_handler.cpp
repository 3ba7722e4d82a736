#include "vek/base/terminate_handler.h"

#include <atomic>
#include <exception>
#include <iostream>

#include "vek/base/compiler.h"
#include "vek/base/environment.h"
#include "vek/exception.h"

namespace vek {

namespace {

std::atomic<bool> installed = false;

void reportException() {
    std::cerr << ">>> unhandled exception occured <<<\n" << std::flush;
    try {
        const std::exception_ptr current = std::current_exception();
        if (current) {
            std::rethrow_exception(current);
        }
        // One that is on its way but was not caught yet can't be looked at.
        throw 0;
    } catch (const Exception& error) {
        std::cerr << "vek::Exception:\n" << error.printableText() << std::endl;
    } catch (const std::exception& error) {
        std::cerr << "std::exception:\n\n" << error.what() << std::endl;
    } catch (...) {
        std::cerr << "unknown exception type" << std::endl;
    }
}

void onTerminate() {
    if (std::uncaught_exceptions() > 0 || std::current_exception()) {
        reportException();
    } else {
        std::cerr << "Program terminated for an unknown reason (e.g. pure virtual method call)"
                  << std::endl;
    }
    std::cerr << "Terminating program\n" << std::endl;
}

}  // namespace

void installTerminateHandler() {
    if (!hasEnv("VEKPAL_NO_TERMINATE_HANDLER")) {
        std::set_terminate(onTerminate);
        installed = true;
    }
}

void installTerminateHandlerOnNewThread() {
    if (terminateHandlerIsPerThread && installed) {
        std::set_terminate(onTerminate);
    }
}

}  // namespace vek
