#include "vek/fs/null_device.h"

#include <gtest/gtest.h>

namespace {

using vek::fs::nullInput;
using vek::fs::nullOutput;

TEST(NullDevice, IsOpenBetweenItsTwoCalls) {
    EXPECT_EQ(nullInput(), nullptr);
    EXPECT_EQ(nullOutput(), nullptr);
    vek::fs::openNullDevice();
    ASSERT_NE(nullInput(), nullptr);
    ASSERT_NE(nullOutput(), nullptr);
    EXPECT_TRUE(nullInput()->isOpen());
    EXPECT_TRUE(nullOutput()->isOpen());
    vek::fs::closeNullDevice();
    EXPECT_EQ(nullInput(), nullptr);
    EXPECT_EQ(nullOutput(), nullptr);
    vek::fs::closeNullDevice();
}

TEST(NullDevice, GivesNothingAndTakesEverything) {
    vek::fs::openNullDevice();
    char buffer[4] = {};
    DWORD count = 77;
    EXPECT_NE(ReadFile(nullInput()->nativeHandle(), buffer, 4, &count, nullptr), 0);
    EXPECT_EQ(count, 0u);
    EXPECT_NE(WriteFile(nullOutput()->nativeHandle(), "text", 4, &count, nullptr), 0);
    EXPECT_EQ(count, 4u);
    EXPECT_EQ(WriteFile(nullInput()->nativeHandle(), "text", 4, &count, nullptr), 0);
    vek::fs::closeNullDevice();
}

TEST(NullDevice, CanBeOpenedAnew) {
    vek::fs::openNullDevice();
    vek::fs::openNullDevice();
    EXPECT_TRUE(nullInput()->isOpen());
    vek::fs::closeNullDevice();
}

}  // namespace
