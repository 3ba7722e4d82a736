#include "vek/base/scope_guard.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace {

using Guard = vek::ScopeGuard<int>;

void countUp(int* count) {
    ++*count;
}

void countAndThrow(int* count) {
    ++*count;
    throw vek::RuntimeError("release failed", vek::RuntimeError("deeper"));
}

TEST(ScopeGuard, ReleasesOnceAtTheEndOfTheScope) {
    int released = 0;
    {
        const Guard guard(&released, countUp);
        EXPECT_EQ(released, 0);
    }
    EXPECT_EQ(released, 1);
}

TEST(ScopeGuard, ReleasesWhenAnExceptionLeavesTheScope) {
    int released = 0;
    try {
        const Guard guard(&released, countUp);
        throw std::runtime_error("leave");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(released, 1);
    }
    EXPECT_EQ(released, 1);
}

TEST(ScopeGuard, ReleasesNothingOnceDismissed) {
    int released = 0;
    {
        Guard guard(&released, countUp);
        guard.dismiss();
    }
    EXPECT_EQ(released, 0);
}

TEST(ScopeGuard, ReportsAnExceptionOfTheReleaseAndDoesNotLetItOut) {
    int released = 0;
    testing::internal::CaptureStderr();
    EXPECT_NO_THROW(const Guard guard(&released, countAndThrow));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception caught while destroying scope guard:\nrelease failed\ndeeper\n\n");
    EXPECT_EQ(released, 1);
}

TEST(ScopeGuard, FailingReleaseKeepsTheExceptionThatLeavesTheScope) {
    int released = 0;
    testing::internal::CaptureStderr();
    EXPECT_THROW(
        {
            const Guard guard(&released, countAndThrow);
            throw std::runtime_error("leave");
        },
        std::runtime_error);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(released, 1);
}

}  // namespace
