// What the fuzz targets share. A target is a program of its own: the fuzzer calls it with inputs of
// its making, and it ends the process where the outcome is wrong, as the sanitizers do for what no
// outcome shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vek::test {

// Ends the process unless `holds`; `claim` is what should have been true.
inline void require(bool holds, const char* claim) {
    if (!holds) {
        std::fprintf(stderr, "not true: %s\n", claim);
        std::abort();
    }
}

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}

// While one lives, std::cerr writes nothing: hostile input is reported there, by the line.
class SilentErrors {
  public:
    SilentErrors() : before(std::cerr.rdbuf(nullptr)) {}
    ~SilentErrors() { std::cerr.rdbuf(before); }
    SilentErrors(const SilentErrors&) = delete;
    SilentErrors& operator=(const SilentErrors&) = delete;

  private:
    std::streambuf* before;
};

}  // namespace vek::test
