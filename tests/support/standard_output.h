// The standard output of the program itself, led elsewhere for a while.
#pragma once

#include <cstdint>
#include <cstdio>
#include <iostream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include "vek/base/windows.h"

namespace support {

// While it lives, std::cout, stdout and the system's standard output handle all lead to `target`,
// of which it takes a copy. What a test prints of its own goes there too. For programs whose
// standard output is no console.
class StandardOutputTo {
  public:
    explicit StandardOutputTo(HANDLE target) {
        flush();
        HANDLE copy = nullptr;
        EXPECT_NE(DuplicateHandle(GetCurrentProcess(), target, GetCurrentProcess(), &copy, 0, FALSE,
                                  DUPLICATE_SAME_ACCESS),
                  0);
        const int file = _open_osfhandle(reinterpret_cast<std::intptr_t>(copy), _O_TEXT);
        EXPECT_EQ(_dup2(file, standardOutput), 0);
        _close(file);
        follow();
    }

    ~StandardOutputTo() {
        std::cout.clear();
        flush();
        EXPECT_EQ(_dup2(original, standardOutput), 0);
        _close(original);
        follow();
    }

    StandardOutputTo(const StandardOutputTo&) = delete;
    StandardOutputTo& operator=(const StandardOutputTo&) = delete;

  private:
    static constexpr int standardOutput = 1;

    static void flush() {
        std::cout.flush();
        std::fflush(stdout);
    }

    static void follow() {
        SetStdHandle(STD_OUTPUT_HANDLE, reinterpret_cast<HANDLE>(_get_osfhandle(standardOutput)));
    }

    const int original = _dup(standardOutput);
};

}  // namespace support
