// log_application::Failure: why a command could not do what it was asked for.
#pragma once

#include <string>

#include "tools/log_application/program/exit_code.h"
#include "vek/exception.h"

namespace log_application {

class Failure : public vek::ExceptionOf<Failure> {
  public:
    // `message` is what happened, `whatNext` what the user may try; both are whole sentences, and
    // what others sent stands in them with its control characters escaped.
    Failure(ExitCode exitCode, const std::string& message, std::string whatNext)
        : ExceptionOf(message), code(exitCode), advice(std::move(whatNext)) {}

    ExitCode exitCode() const { return code; }
    const std::string& whatNext() const { return advice; }

  private:
    ExitCode code;
    std::string advice;
};

}  // namespace log_application
