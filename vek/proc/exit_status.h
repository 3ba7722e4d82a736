// vek::proc::ExitStatus: how a child process ended.
#pragma once

#include <cstdint>
#include <iosfwd>

namespace vek::proc {

// The exit code that a process gets from Child::kill. Who ends with it counts as killed.
inline constexpr std::uint32_t killCode = 37125;

struct ExitStatus {
    std::uint32_t code = 0;
    // The exit code was killCode, whoever set it: a child that ends with it by itself counts as
    // killed, and one that was ended from elsewhere with another code doesn't.
    bool killed = false;
    // The process has ended. False after a wait that ran out of time.
    bool finished = false;

    // It has ended by itself, with code 0.
    bool succeeded() const { return finished && !killed && code == 0; }
};

// Two or three lines, without a line end behind the last: "finished: 1\nkilled: 0\ncode: 3". The
// code is only there if the process has ended and wasn't killed. The stream's own settings for
// numbers have no effect.
std::ostream& operator<<(std::ostream& out, const ExitStatus& status);

}  // namespace vek::proc
