// What log_application says to its user.
#pragma once

#include <string>

#include "tools/log_application/program/failure.h"

namespace log_application {

// Writes "log_application: ", `text` and a line end to the standard error stream, in one piece.
void say(const std::string& text);

// The same for a failure, with what to try next on a line of its own. The result is its exit code.
ExitCode report(const Failure& failure);

// Whether the standard output is a console that takes colours: not so for a file, a pipe and the
// device "nul", and where VEK_NO_COLOR is set. Stands on GetConsoleScreenBufferInfo.
bool takesColors();

// Flushes the standard output. Throws Failure if something of it could not be written.
void flushOutput();

}  // namespace log_application
