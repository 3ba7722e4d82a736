// A program, run from its start to its end, and what it wrote.
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "vek/base/windows.h"

namespace support {

// Names and values, in the order of the block.
using Environment = std::vector<std::pair<std::string, std::string>>;

struct ProgramOutput {
    DWORD exitCode;  // STILL_ACTIVE for a program that didn't end by itself
    std::string output;
    std::string error;  // both with line feeds only

    bool operator==(const ProgramOutput&) const = default;
};
std::ostream& operator<<(std::ostream& out, const ProgramOutput& run);

// Runs `program` with `arguments`, quoted as its runtime wants them, in `directory` (this process's
// own, if empty). Its environment is this process's, without the variables of the log, and
// `environment` behind that. It is ended after a minute. Throws vek::FsError.
ProgramOutput runProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const Environment& environment = {}, const std::string& directory = {});

}  // namespace support
