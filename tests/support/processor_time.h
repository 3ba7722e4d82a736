// support::ProcessorTime: the processor time that this process uses. Unlike the time that passes,
// it is the same on a busy machine.
#pragma once

#include <chrono>

#include "vek/base/windows.h"

namespace support {

class ProcessorTime {
  public:
    // Since the construction, of all threads of this process. Calls GetProcessTimes.
    std::chrono::milliseconds used() const { return now() - start; }

  private:
    static std::chrono::milliseconds now() {
        FILETIME created;
        FILETIME ended;
        FILETIME kernel;
        FILETIME user;
        GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
        return std::chrono::milliseconds((value(kernel) + value(user)) / 10'000);
    }
    static long long value(const FILETIME& time) {
        return static_cast<long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    }

    const std::chrono::milliseconds start = now();
};

}  // namespace support
