// The reports of the configuration on a real console, which is read back: which are yellow.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include <tclap/CmdLine.h>

#include "tests/support/console_fixture.h"
#include "vek/log/configurator.h"
#include "vek/pal.h"

namespace {

using vek::log::Configurator;

class ConfigReportsOnAConsole : public support::ConsoleTest {
  protected:
    static constexpr WORD yellow = 0x06;

    void SetUp() override {
        ConsoleTest::SetUp();
        if (!HasFatalFailure()) {
            const COORD home = {0, 0};
            CONSOLE_SCREEN_BUFFER_INFO info = {};
            ASSERT_NE(GetConsoleScreenBufferInfo(output, &info), 0);
            const DWORD size = static_cast<DWORD>(info.dwSize.X * info.dwSize.Y);
            DWORD count = 0;
            ASSERT_NE(FillConsoleOutputCharacterA(output, ' ', size, home, &count), 0);
            ASSERT_NE(SetConsoleCursorPosition(output, home), 0);
        }
    }

    // The attributes of the console's characters from `start` up to the cursor.
    std::set<int> colorsSince(COORD start) const {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        EXPECT_NE(GetConsoleScreenBufferInfo(error, &info), 0);
        const int width = info.dwSize.X;
        const int size = (info.dwCursorPosition.Y - start.Y) * width + info.dwCursorPosition.X;
        std::string text(static_cast<std::size_t>(size), ' ');
        std::vector<WORD> attributes(text.size());
        DWORD count = 0;
        EXPECT_NE(ReadConsoleOutputCharacterA(error, text.data(), static_cast<DWORD>(size), start,
                                              &count),
                  0);
        EXPECT_NE(ReadConsoleOutputAttribute(error, attributes.data(), static_cast<DWORD>(size),
                                             start, &count),
                  0);
        std::set<int> colors;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != ' ' && text[i] != '\0') {
                colors.insert(attributes[i]);
            }
        }
        return colors;
    }

    // The colours of what is reported on a start with `text` as the file.
    std::set<int> reportsOf(const std::string& text, bool persist = false) const {
        const std::string file = std::filesystem::temp_directory_path().string() +
                                 "\\config_report_" + std::to_string(GetCurrentProcessId());
        std::ofstream(file, std::ios::binary) << text;
        if (persist) {
            std::filesystem::create_directory(file + ".bak");
        }
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        EXPECT_NE(GetConsoleScreenBufferInfo(error, &info), 0);
        {
            TCLAP::CmdLine cmd("test");
            Configurator configurator(&cmd);
            std::vector<std::string> arguments = {"test", "--logcfg", file};
            cmd.parse(arguments);
            configurator.configure("p");
            if (persist) {
                configurator.persistConfig();
            }
        }
        std::filesystem::remove(file);
        std::filesystem::remove(file + ".bak");
        const std::set<int> colors = colorsSince(info.dwCursorPosition);
        EXPECT_EQ(attribute() & 0xFF, whiteOnBlack) << text;
        std::cerr << std::endl;
        return colors;
    }

    const vek::VekPal pal{false, 0, 4, nullptr};
};

using Colors = std::set<int>;

TEST_F(ConfigReportsOnAConsole, WhatEndsTheReadingIsYellow) {
    EXPECT_EQ(reportsOf("}"), Colors{yellow});
    EXPECT_EQ(reportsOf("defaults = { sink = { stdout = { max_level = \"x\"; }; }; };"),
              Colors{yellow});
    EXPECT_EQ(reportsOf("defaults = { sink = { file = { max_archives = \"x\"; }; }; };"),
              Colors{yellow});
}

TEST_F(ConfigReportsOnAConsole, FileThatCannotBeOpenedIsYellow) {
    EXPECT_EQ(reportsOf("defaults = { sink = { file = { enabled = true; path = "
                        "\"Z:\\\\missing\\\\x.log\"; }; }; };"),
              Colors{yellow});
}

TEST_F(ConfigReportsOnAConsole, MissingCopyIsYellow) {
    EXPECT_EQ(reportsOf("x = 1;", true), Colors{yellow});
}

TEST_F(ConfigReportsOnAConsole, OtherReportsAreNotColored) {
    EXPECT_EQ(reportsOf("defaults = { default_level = \"x\"; loggers = { a = \"x\"; }; sink = {"
                        " file = ( 1, { } ); }; };"),
              Colors{whiteOnBlack});
}

TEST_F(ConfigReportsOnAConsole, WithoutColorsNothingIsColored) {
    vek::setConsoleColors(false, false);
    EXPECT_EQ(reportsOf("}"), Colors{whiteOnBlack});
}

}  // namespace
