#include "tools/log_application/program/console.h"

#include <iostream>

#include "tools/log_application/show/ansi_text.h"
#include "vek/base/console_colors.h"
#include "vek/base/windows.h"

namespace log_application {

void say(const std::string& text) {
    std::cerr << "log_application: " + utf8Of(text) + "\n" << std::flush;
}

ExitCode report(const Failure& failure) {
    say(failure.description() + "\n  " + failure.whatNext());
    return failure.exitCode();
}

bool takesColors() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    return vek::colorEnabled(std::cout) &&
           GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) != 0;
}

void flushOutput() {
    if (!std::cout.flush()) {
        throw Failure(exitLost, "The output can't be written.",
                      "Is there room on the disk, and does whoever reads it still run?");
    }
}

}  // namespace log_application
