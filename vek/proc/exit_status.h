// vek::proc::ExitStatus: the result of a child process.
#pragma once

#include <cstdint>
#include <iosfwd>

namespace vek::proc {

// The exit code set by Child::kill. A process that exits with it counts as killed.
inline constexpr std::uint32_t killCode = 37125;

struct ExitStatus {
    std::uint32_t code = 0;
    // The exit code is killCode, whoever set it: a child that exits with this code by itself counts
    // as killed; one that another program terminated with another code doesn't.
    bool killed = false;
    // The process has exited. False after a time-out.
    bool finished = false;

    // True if it exited with code 0.
    bool succeeded() const { return finished && !killed && code == 0; }
};

// Writes two or three lines with no line end after the last: "finished: 1\nkilled: 0\ncode: 3".
// The code is left out unless the process has exited and wasn't killed. The stream's number format
// has no effect.
std::ostream& operator<<(std::ostream& out, const ExitStatus& status);

}  // namespace vek::proc
