// The standard streams of this process, led elsewhere for a while.
#pragma once

#include <array>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::test {

// Only the system's handles are changed; what the runtime writes goes where it went.
class OwnStreams : public NoCopy {
  public:
    // All three become `handle`, which stays the caller's.
    explicit OwnStreams(HANDLE handle) {
        for (std::size_t i = 0; i < which.size(); ++i) {
            original[i] = GetStdHandle(which[i]);
            SetStdHandle(which[i], handle);
        }
    }
    ~OwnStreams() {
        for (std::size_t i = 0; i < which.size(); ++i) {
            SetStdHandle(which[i], original[i]);
        }
    }

  private:
    static constexpr std::array<DWORD, 3> which = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE,
                                                   STD_ERROR_HANDLE};
    std::array<HANDLE, 3> original = {};
};

}  // namespace vek::test
