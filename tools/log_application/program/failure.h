// log_application::Failure: why a command failed, and what the user can do.
#pragma once

#include <string>

#include "tools/log_application/program/exit_code.h"
#include "vek/exception.h"

namespace log_application {

class Failure : public vek::ExceptionOf<Failure> {
  public:
    // `message` is what happened, `whatNext` what the user can try. Both are whole sentences. The
    // caller escapes control characters in what others sent.
    Failure(ExitCode exitCode, const std::string& message, std::string whatNext)
        : ExceptionOf(message), code(exitCode), advice(std::move(whatNext)) {}

    ExitCode exitCode() const { return code; }
    const std::string& whatNext() const { return advice; }

  private:
    ExitCode code;
    std::string advice;
};

}  // namespace log_application
