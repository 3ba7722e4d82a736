#include "vek/base/fail_fast.h"

#include <cstdlib>

#include "vek/base/compiler.h"
#include "vek/base/windows.h"

namespace vek {

namespace {

// What the system ends a process with that fails fast: STATUS_STACK_BUFFER_OVERRUN.
constexpr UINT exitCode = 0xC0000409;

}  // namespace

void failFast(unsigned reason) {
    if (IsProcessorFeaturePresent(PF_FASTFAIL_AVAILABLE) != 0) {
        raiseFastFail(reason);
    }
    TerminateProcess(GetCurrentProcess(), exitCode);
    std::abort();
}

}  // namespace vek
