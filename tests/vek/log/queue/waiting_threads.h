// For tests of what lets threads wait on a vek::log::QueueLock.
#pragma once

#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "tests/vek/thread/lock_support.h"
#include "vek/base/optional_function.h"

namespace vek_test {

// On the system's own condition variables, and on the runtime's.
class OnEachSystem : public testing::TestWithParam<const char*> {
  protected:
    const LookedUpIn library{GetParam(), GetParam()};
};

inline const auto eachSystem = testing::Values(nativeLibrary, olderLibrary);

inline std::string systemName(const testing::TestParamInfo<const char*>& instance) {
    return instance.param == std::string(nativeLibrary) ? "New" : "Old";
}

// With a library that counts sleeping threads.
class WatchedSleeps : public testing::Test {
  protected:
    // Since the start of the test.
    unsigned sleeps() const { return sleepCount() - sleepsBefore; }
    bool someoneSleeps(unsigned times) {
        return becomesTrue([&] { return sleeps() >= times; });
    }

    const LookedUpIn library{watchedLibrary, nativeLibrary};
    unsigned(WINAPI* const sleepCount)() =
        vek::resolveFunction<unsigned(WINAPI*)()>(library.conditionLibrary(), "sleepCount");
    void(WINAPI* const failSleepsWith)(DWORD) =
        vek::resolveFunction<void(WINAPI*)(DWORD)>(library.conditionLibrary(), "failSleepsWith");
    const unsigned sleepsBefore = sleepCount();
};

// The code that `wait` fails with, if it fails as the standard library's conditions do.
template <class Wait>
int systemErrorOf(Wait wait) {
    try {
        wait();
    } catch (const std::system_error& error) {
        return error.code().value();
    }
    return 0;
}

}  // namespace vek_test
