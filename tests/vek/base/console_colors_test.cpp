#include "vek/base/console_colors.h"

#include <functional>
#include <iostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::applyColor;
using vek::colorEnabled;
using vek::ColorReset;
using vek::ColorSpec;
using vek::initConsoleColors;
using vek::resetColor;
using vek::setConsoleColors;

// Streams that are no console. tests/vek/base/console_colors_console_test.cpp has one.
class ConsoleColors : public testing::Test {
  protected:
    ConsoleColors() { unsetBoth(); }

    ~ConsoleColors() override {
        unsetBoth();
        setConsoleColors(false, false);
        SetStdHandle(STD_OUTPUT_HANDLE, output);
        SetStdHandle(STD_ERROR_HANDLE, error);
        for (const HANDLE handle : {nul, file, pipeRead, pipeWrite}) {
            CloseHandle(handle);
        }
    }

    static void unsetBoth() {
        SetEnvironmentVariableA("VEK_NO_COLOR", nullptr);
        SetEnvironmentVariableA("VEK_FORCE_COLOR", nullptr);
    }

    static void redirect(HANDLE newOutput, HANDLE newError) {
        SetStdHandle(STD_OUTPUT_HANDLE, newOutput);
        SetStdHandle(STD_ERROR_HANDLE, newError);
    }

    static void expectEnabled(bool forStdout, bool forStderr) {
        EXPECT_EQ(colorEnabled(std::cout), forStdout);
        EXPECT_EQ(colorEnabled(std::cerr), forStderr);
    }

    // Expects the error that the system has for `handle`, which is no console.
    static void expectNoConsole(HANDLE handle, const std::function<void()>& call) {
        CONSOLE_SCREEN_BUFFER_INFO info;
        EXPECT_EQ(GetConsoleScreenBufferInfo(handle, &info), 0);
        const DWORD expected = GetLastError();
        SetLastError(0);
        try {
            call();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const vek::OsError& thrown) {
            EXPECT_EQ(thrown.code(), expected);
            EXPECT_NE(expected, 0u);
        }
    }

    static HANDLE openNul() {
        return CreateFileA("nul", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                           nullptr);
    }

    static HANDLE openFile() {
        char directory[MAX_PATH];
        char name[MAX_PATH];
        EXPECT_NE(GetTempPathA(sizeof directory, directory), 0u);
        EXPECT_NE(GetTempFileNameA(directory, "vek", 0, name), 0u);
        return CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                           FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    }

    static HANDLE openPipe(HANDLE& readEnd) {
        HANDLE writeEnd = nullptr;
        EXPECT_NE(CreatePipe(&readEnd, &writeEnd, nullptr, 0), 0);
        return writeEnd;
    }

    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    const HANDLE nul = openNul();
    const HANDLE file = openFile();
    HANDLE pipeRead = nullptr;
    const HANDLE pipeWrite = openPipe(pipeRead);
    const ColorSpec redText = {ColorSpec::red, false, ColorSpec::keepColor, false, false};
};

TEST_F(ConsoleColors, AreOffUntilDecided) {
    expectEnabled(false, false);
}

TEST_F(ConsoleColors, AreSetForEachStreamByItself) {
    setConsoleColors(true, false);
    expectEnabled(true, false);
    setConsoleColors(false, true);
    expectEnabled(false, true);
    setConsoleColors(true, true);
    expectEnabled(true, true);
}

TEST_F(ConsoleColors, AreNeverOnForOtherStreams) {
    setConsoleColors(true, true);
    std::ostream sameBuffer(std::cout.rdbuf());
    std::ostringstream text;
    EXPECT_FALSE(colorEnabled(std::clog));
    EXPECT_FALSE(colorEnabled(sameBuffer));
    EXPECT_FALSE(colorEnabled(text));
}

TEST_F(ConsoleColors, AreOffInFilesAndPipes) {
    redirect(file, pipeWrite);
    setConsoleColors(true, true);
    initConsoleColors();
    expectEnabled(false, false);
    redirect(pipeWrite, file);
    initConsoleColors();
    expectEnabled(false, false);
}

TEST_F(ConsoleColors, AreOnForACharacterDevice) {
    redirect(nul, file);
    initConsoleColors();
    expectEnabled(true, false);
    redirect(pipeWrite, nul);
    initConsoleColors();
    expectEnabled(false, true);
}

TEST_F(ConsoleColors, AreOffWithoutStandardHandles) {
    redirect(nullptr, INVALID_HANDLE_VALUE);
    initConsoleColors();
    expectEnabled(false, false);
}

TEST_F(ConsoleColors, NoColorVariableTurnsThemOffWhateverItsValue) {
    redirect(nul, nul);
    for (const char* value : {"1", "0", "no", ""}) {
        SetEnvironmentVariableA("VEK_NO_COLOR", value);
        setConsoleColors(true, true);
        initConsoleColors();
        expectEnabled(false, false);
    }
}

TEST_F(ConsoleColors, ForceColorVariableTurnsThemOnWhateverItsValue) {
    redirect(file, pipeWrite);
    for (const char* value : {"1", "0", "no", ""}) {
        SetEnvironmentVariableA("VEK_FORCE_COLOR", value);
        setConsoleColors(false, false);
        initConsoleColors();
        expectEnabled(true, true);
    }
}

TEST_F(ConsoleColors, NoColorWinsOverForceColor) {
    redirect(nul, nul);
    for (const char* value : {"1", ""}) {
        SetEnvironmentVariableA("VEK_NO_COLOR", value);
        SetEnvironmentVariableA("VEK_FORCE_COLOR", "1");
        initConsoleColors();
        expectEnabled(false, false);
    }
}

TEST_F(ConsoleColors, DecisionIsNotMadeAgainByItself) {
    redirect(file, file);
    initConsoleColors();
    SetEnvironmentVariableA("VEK_FORCE_COLOR", "1");
    expectEnabled(false, false);
}

TEST_F(ConsoleColors, NothingHappensWhereTheyAreOff) {
    redirect(nullptr, nullptr);
    std::ostringstream text;
    setConsoleColors(true, true);
    EXPECT_EQ(&applyColor(text, redText), &text);
    EXPECT_EQ(&resetColor(text, ColorReset()), &text);
    EXPECT_EQ(text.str(), "");
    setConsoleColors(false, false);
    EXPECT_EQ(&applyColor(std::cout, redText), &std::cout);
    EXPECT_EQ(&resetColor(std::cerr, ColorReset()), &std::cerr);
}

TEST_F(ConsoleColors, FailWhereTheyAreOnAndThereIsNoConsole) {
    setConsoleColors(true, true);
    for (const HANDLE handle : {file, pipeWrite, nul, HANDLE{nullptr}}) {
        redirect(handle, handle);
        for (std::ostream* const stream : {&std::cout, &std::cerr}) {
            expectNoConsole(handle, [&] { applyColor(*stream, redText); });
            expectNoConsole(handle, [&] { applyColor(*stream, {-1, true, -1, false, false}); });
            expectNoConsole(handle, [&] { applyColor(*stream, {-1, false, 0, false, false}); });
            expectNoConsole(handle, [&] { applyColor(*stream, {-1, false, -1, true, false}); });
            expectNoConsole(handle, [&] { resetColor(*stream, {ColorReset::reset, false}); });
            expectNoConsole(handle, [&] { resetColor(*stream, {ColorReset::underline, false}); });
            expectNoConsole(handle, [&] { resetColor(*stream, {0, false}); });
        }
    }
}

TEST_F(ConsoleColors, ColorThatChangesNothingNeedsNoConsole) {
    setConsoleColors(true, true);
    redirect(file, nullptr);
    EXPECT_NO_THROW(applyColor(std::cout, ColorSpec()));
    EXPECT_NO_THROW(applyColor(std::cerr, {-1, false, -1, false, true}));
}

TEST_F(ConsoleColors, ForcedOnesFailWithoutAConsoleToo) {
    redirect(file, pipeWrite);
    std::ostringstream text;
    for (std::ostream* const stream : {&std::cout, static_cast<std::ostream*>(&text)}) {
        expectNoConsole(file, [&] {
            applyColor(*stream, {ColorSpec::red, false, ColorSpec::keepColor, false, true});
        });
        expectNoConsole(file, [&] { resetColor(*stream, {ColorReset::reset, true}); });
    }
    EXPECT_EQ(text.str(), "");
}

TEST_F(ConsoleColors, FailureLeavesNothingInTheFile) {
    setConsoleColors(true, true);
    redirect(file, file);
    EXPECT_THROW(applyColor(std::cout, redText), vek::OsError);
    EXPECT_EQ(GetFileSize(file, nullptr), 0u);
}

}  // namespace
