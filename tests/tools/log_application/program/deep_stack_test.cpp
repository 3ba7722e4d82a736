#include "tools/log_application/program/deep_stack.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace {

using namespace log_application;

std::size_t room() {
    const char here = 0;
    return reinterpret_cast<std::size_t>(&here) - stackBottom();
}

TEST(DeepStack, HasTheRoomThatItSays) {
    std::size_t deep = 0;
    runOnDeepStack([&deep] { deep = room(); });
    EXPECT_GT(deep, deepStackBytes - (1 << 20));
    EXPECT_LE(deep, deepStackBytes);
    EXPECT_LT(room(), deepStackBytes / 2);
}

TEST(DeepStack, RethrowsWhatTheWorkThrows) {
    EXPECT_THROW(runOnDeepStack([] { throw std::domain_error("x"); }), std::domain_error);
}

}  // namespace
