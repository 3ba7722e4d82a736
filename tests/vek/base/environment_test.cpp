#include "vek/base/environment.h"

#include <atomic>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::getEnv;
using vek::hasEnv;

constexpr const char* name = "VEK_ENVIRONMENT_TEST";

// Leaves no variable to the next test.
class Environment : public testing::Test {
  protected:
    Environment() { SetEnvironmentVariableA(name, nullptr); }
    ~Environment() override { SetEnvironmentVariableA(name, nullptr); }

    std::string value = "left over";
};

TEST_F(Environment, SetValueIsRead) {
    vek::setEnv(name, "a value");
    EXPECT_TRUE(getEnv(name, value));
    EXPECT_EQ(value, "a value");
    vek::setEnv(name, "b");
    EXPECT_TRUE(getEnv(name, value));
    EXPECT_EQ(value, "b");
}

TEST_F(Environment, NamesKnowNoCase) {
    vek::setEnv("vek_Environment_Test", "x");
    EXPECT_TRUE(getEnv(name, value));
}

TEST_F(Environment, MissingVariableEmptiesTheValue) {
    EXPECT_FALSE(getEnv(name, value));
    EXPECT_EQ(value, "");
    EXPECT_FALSE(hasEnv(name));
}

TEST_F(Environment, EmptyNameIsMissing) {
    EXPECT_FALSE(getEnv("", value));
    EXPECT_EQ(value, "");
    EXPECT_FALSE(hasEnv(""));
}

TEST_F(Environment, EmptyVariableIsReportedAsAFailure) {
    vek::setEnv(name, "");
    SetLastError(ERROR_FILE_NOT_FOUND);
    try {
        getEnv(name, value);
        FAIL() << "nothing was thrown";
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), 0u);
    }
    EXPECT_EQ(value, "left over");
}

TEST_F(Environment, EmptyVariableIsPresent) {
    vek::setEnv(name, "");
    EXPECT_TRUE(hasEnv(name));
}

TEST_F(Environment, SetVariableIsPresent) {
    vek::setEnv(name, "0");
    EXPECT_TRUE(hasEnv(name));
}

TEST_F(Environment, UnsetVariableIsMissing) {
    vek::setEnv(name, "x");
    vek::unsetEnv(name);
    EXPECT_FALSE(hasEnv(name));
    EXPECT_FALSE(getEnv(name, value));
}

TEST_F(Environment, ImpossibleNamesFail) {
    try {
        vek::setEnv("", "x");
        FAIL() << "nothing was thrown";
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
    }
    EXPECT_THROW(vek::setEnv("A=B", "x"), vek::OsError);
    EXPECT_THROW(vek::unsetEnv("A=B"), vek::OsError);
}

TEST_F(Environment, LongValuesAndBytesAboveAsciiAreWhole) {
    for (const std::size_t length : {127u, 128u, 1024u, 32000u}) {
        const std::string text(length, 'x');
        vek::setEnv(name, text);
        EXPECT_TRUE(getEnv(name, value));
        EXPECT_EQ(value, text);
    }
    vek::setEnv(name, "\xE4=%PATH%\r\n");
    EXPECT_TRUE(getEnv(name, value));
    EXPECT_EQ(value, "\xE4=%PATH%\r\n");
}

TEST_F(Environment, TextEndsAtAZeroByte) {
    vek::setEnv(name, std::string("a\0b", 3));
    EXPECT_TRUE(getEnv(name + std::string("\0x", 2), value));
    EXPECT_EQ(value, "a");
}

TEST_F(Environment, ValueThatChangesMeanwhileIsReadWhole) {
    const std::string shortValue = "s";
    const std::string longValue(20000, 'l');
    vek::setEnv(name, shortValue);
    std::atomic<bool> done = false;
    std::thread writer([&] {
        while (!done) {
            SetEnvironmentVariableA(name, longValue.c_str());
            SetEnvironmentVariableA(name, shortValue.c_str());
        }
    });
    int torn = 0;
    const auto end = GetTickCount64() + 500;
    while (GetTickCount64() < end) {
        EXPECT_TRUE(getEnv(name, value));
        torn += value != shortValue && value != longValue ? 1 : 0;
    }
    done = true;
    writer.join();
    EXPECT_EQ(torn, 0);
}

}  // namespace
