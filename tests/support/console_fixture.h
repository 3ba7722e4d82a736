// A console that a test can read back.
#pragma once

#include <gtest/gtest.h>

#include "vek/base/console_colors.h"
#include "vek/base/windows.h"

namespace support {

// The standard output and the standard error are one console with colours on, white on black ahead
// of each test. For programs of vek_console_test only.
class ConsoleTest : public testing::Test {
  protected:
    static constexpr WORD whiteOnBlack = 0x07;

    void SetUp() override {
        ASSERT_EQ(GetFileType(output), static_cast<DWORD>(FILE_TYPE_CHAR));
        CONSOLE_SCREEN_BUFFER_INFO info;
        ASSERT_NE(GetConsoleScreenBufferInfo(output, &info), 0) << "no console";
        ASSERT_NE(GetConsoleScreenBufferInfo(error, &info), 0) << "no console";
        setAttribute(whiteOnBlack);
        vek::setConsoleColors(true, true);
    }

    ~ConsoleTest() override {
        vek::setConsoleColors(false, false);
        SetStdHandle(STD_OUTPUT_HANDLE, output);
        SetStdHandle(STD_ERROR_HANDLE, error);
        SetConsoleTextAttribute(output, whiteOnBlack);
    }

    // The attribute that the next character gets.
    static WORD attributeOf(HANDLE console) {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        EXPECT_NE(GetConsoleScreenBufferInfo(console, &info), 0);
        return info.wAttributes;
    }
    WORD attribute() const { return attributeOf(output); }

    void setAttribute(int wanted) const {
        EXPECT_NE(SetConsoleTextAttribute(output, static_cast<WORD>(wanted)), 0);
        EXPECT_EQ(attribute(), wanted);
    }

    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
};

}  // namespace support
