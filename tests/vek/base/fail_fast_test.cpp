#include "vek/base/fail_fast.h"

#include <gtest/gtest.h>

#include "tests/support/replaced_import.h"
#include "vek/base/windows.h"

namespace {

constexpr int failedFast = static_cast<int>(0xC0000409);
// A call of TerminateProcess ends with this, so that it isn't taken for a fast fail.
constexpr int terminated = 7;

BOOL WINAPI noFastFail(DWORD feature) {
    return feature != PF_FASTFAIL_AVAILABLE;
}

BOOL WINAPI endWithMark(HANDLE process, UINT code) {
    if (process != GetCurrentProcess() || code != 0xC0000409) {
        return FALSE;
    }
    ExitProcess(terminated);
}

TEST(FailFastDeathTest, EndsTheProcessWithoutACallToTheSystem) {
    const support::ReplacedImport<decltype(&TerminateProcess)> marked("TerminateProcess",
                                                                      endWithMark);
    EXPECT_EXIT(vek::failFast(FAST_FAIL_RANGE_CHECK_FAILURE), testing::ExitedWithCode(failedFast),
                "");
}

TEST(FailFastDeathTest, TerminatesTheProcessOnASystemWithoutFastFail) {
    const support::ReplacedImport<decltype(&IsProcessorFeaturePresent)> older(
        "IsProcessorFeaturePresent", noFastFail);
    const support::ReplacedImport<decltype(&TerminateProcess)> marked("TerminateProcess",
                                                                      endWithMark);
    EXPECT_EXIT(vek::failFast(FAST_FAIL_RANGE_CHECK_FAILURE), testing::ExitedWithCode(terminated),
                "");
}

}  // namespace
