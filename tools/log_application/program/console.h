// What log_application reports to its user.
#pragma once

#include <string>

#include "tools/log_application/program/failure.h"

namespace log_application {

// Writes "log_application: ", `text` and a line end to std::cerr in one call.
void say(const std::string& text);

// Writes the description of `failure` in the same way, and its advice on a second line. Returns its
// exit code.
ExitCode report(const Failure& failure);

// True if the standard output is a console and VEK_NO_COLOR isn't set. False for a file, a pipe and
// the device "nul". Calls GetConsoleScreenBufferInfo.
bool takesColors();

// Flushes std::cout. Throws Failure (exitLost) if a write to it has failed.
void flushOutput();

}  // namespace log_application
