// Redirects this process's standard streams for a scope.
#pragma once

#include <array>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::test {

// Changes only the system's handles; the C runtime's streams stay as they are.
class OwnStreams : public NoCopy {
  public:
    // Sets all three to `handle`, which isn't owned.
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
