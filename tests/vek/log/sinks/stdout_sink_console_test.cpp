// The stdout and the debugger sink on a real console, which is read back.
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/console_fixture.h"
#include "tests/vek/log/sample_message.h"
#include "vek/log/sinks/debugger_sink.h"
#include "vek/log/sinks/stdout_sink.h"

namespace {

using namespace vek::log;
using vek::test::SampleMessage;

SinkConfig withoutFlags(const std::vector<FormatToken>& format = {}) {
    return {true, false, false, false, INVALID, format};
}

class SinksOnAConsole : public support::ConsoleTest {
  protected:
    void SetUp() override {
        ConsoleTest::SetUp();
        // Room for the lines of a test, so that the console doesn't scroll while they are written.
        if (!HasFatalFailure()) {
            COORD home = {0, 0};
            ASSERT_NE(SetConsoleCursorPosition(output, home), 0);
        }
    }

    // A line of the console: its characters up to `size`, and the attribute of each.
    struct Line {
        std::string text;
        std::vector<WORD> attributes;

        bool operator==(const Line& other) const = default;
    };

    // `text` in one attribute.
    static Line colored(const std::string& text, int attribute) {
        return {text, std::vector<WORD>(text.size(), static_cast<WORD>(attribute))};
    }

    friend Line operator+(Line left, const Line& right) {
        left.text += right.text;
        left.attributes.insert(left.attributes.end(), right.attributes.begin(),
                               right.attributes.end());
        return left;
    }

    friend void PrintTo(const Line& line, std::ostream* stream) {
        *stream << line.text;
        for (const WORD attribute : line.attributes) {
            *stream << ' ' << std::hex << attribute;
        }
    }

    COORD cursor() const {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        EXPECT_NE(GetConsoleScreenBufferInfo(output, &info), 0);
        return info.dwCursorPosition;
    }

    // Stores `message` in `sink`, on a console that is at the attribute `before`, and expects it as
    // one line, `expected`.
    void expectLine(Sink& sink, const Message& message, int before, const Line& expected) const {
        std::cout.flush();
        setAttribute(before);
        const COORD start = cursor();
        ASSERT_EQ(start.X, 0);
        sink.store(message);
        EXPECT_EQ(cursor().X, 0) << "no line end";
        EXPECT_EQ(cursor().Y, start.Y + 1);
        const DWORD size = static_cast<DWORD>(expected.text.size());
        Line line = colored(std::string(size, ' '), 0);
        DWORD count = 0;
        EXPECT_NE(ReadConsoleOutputCharacterA(output, line.text.data(), size, start, &count), 0);
        EXPECT_NE(ReadConsoleOutputAttribute(output, line.attributes.data(), size, start, &count),
                  0);
        EXPECT_EQ(line, expected);
    }
};

constexpr struct {
    Level level;
    const char* name;
    int fromWhiteOnBlack;
    int fromBrightCyanOnMagenta;
} levels[] = {
    {OFF, "  OFF", 0x07, 0x5B},       {ERR, "  ERR", 0x0C, 0x5C},
    {WARN, " WARN", 0x0E, 0x5E},      {INFO, " INFO", 0x07, 0x5B},
    {DEBUG, "DEBUG", 0x02, 0x52},     {TRACE, "TRACE", 0x03, 0x03},
    {DEFAULT, "DEFAULT", 0x3C, 0x3C}, {INVALID, "INVALID", 0x07, 0x5B},
};

TEST_F(SinksOnAConsole, DefaultLayoutHasTheColorOfTheLevelAndEndsWhiteOnBlack) {
    StdoutSink sink(withoutFlags());
    for (const auto& row : levels) {
        const SampleMessage message(row.level);
        const std::string text = std::string("[") + row.name + "] tolmarhlp: text";
        expectLine(sink, message, 0x07, colored(text, row.fromWhiteOnBlack));
        EXPECT_EQ(attribute() & 0xFF, 0x07) << row.name;
        expectLine(sink, message, 0x5B, colored(text, row.fromBrightCyanOnMagenta));
        EXPECT_EQ(attribute() & 0xFF, 0x07) << row.name;
    }
}

TEST_F(SinksOnAConsole, ProcessThreadAndTimeStandAheadOfTheColor) {
    StdoutSink sink({true, true, true, false, INVALID, {}});
    expectLine(sink, SampleMessage(ERR), 0x5B,
               colored("PID=4000000001 | TID=4294967295 | ", 0x5B) +
                   colored("[  ERR] tolmarhlp: text", 0x5C));
}

TEST_F(SinksOnAConsole, FormatIsColoredWhereItSaysSo) {
    StdoutSink sink(withoutFlags(compileFormat("{agent} {color_start}{level}{color_end} {msg}")));
    for (const auto& row : levels) {
        expectLine(sink, SampleMessage(row.level), 0x5B,
                   colored("tolmarhlp ", 0x5B) + colored(row.name, row.fromBrightCyanOnMagenta) +
                       colored(" text", 0x07));
    }
}

TEST_F(SinksOnAConsole, FormatWithoutColorsLeavesTheConsoleAlone) {
    StdoutSink sink(withoutFlags(compileFormat("{level} {msg}")));
    expectLine(sink, SampleMessage(ERR), 0x5B, colored("  ERR text", 0x5B));
    EXPECT_EQ(attribute(), 0x5B);
}

TEST_F(SinksOnAConsole, ColorThatAFormatDoesNotEndStays) {
    StdoutSink sink(withoutFlags(compileFormat("{color_start}{msg}")));
    expectLine(sink, SampleMessage(ERR), 0x07, colored("text", 0x0C));
    EXPECT_EQ(attribute(), 0x0C);
}

TEST_F(SinksOnAConsole, SinkMadeWithoutColorsStaysWithoutThem) {
    vek::setConsoleColors(false, true);
    StdoutSink plain(withoutFlags());
    StdoutSink formatted(withoutFlags(compileFormat("<{color_start}{msg}{color_end}>")));
    vek::setConsoleColors(true, true);
    expectLine(plain, SampleMessage(ERR), 0x5B, colored("[  ERR] tolmarhlp: text", 0x5B));
    expectLine(formatted, SampleMessage(ERR), 0x5B, colored("<text>", 0x5B));
    EXPECT_EQ(attribute(), 0x5B);
}

TEST_F(SinksOnAConsole, ConsoleIsColoredByItselfAndNotWithTheVariable) {
    SetEnvironmentVariableA("VEK_FORCE_COLOR", nullptr);
    vek::initConsoleColors();
    StdoutSink byItself(withoutFlags());
    expectLine(byItself, SampleMessage(ERR), 0x07, colored("[  ERR] tolmarhlp: text", 0x0C));
    SetEnvironmentVariableA("VEK_NO_COLOR", "");
    SetEnvironmentVariableA("VEK_FORCE_COLOR", "1");
    vek::initConsoleColors();
    StdoutSink without(withoutFlags());
    expectLine(without, SampleMessage(ERR), 0x5B, colored("[  ERR] tolmarhlp: text", 0x5B));
    SetEnvironmentVariableA("VEK_NO_COLOR", nullptr);
    SetEnvironmentVariableA("VEK_FORCE_COLOR", nullptr);
}

TEST_F(SinksOnAConsole, DebuggerSinkTouchesNoConsole) {
    DebuggerSink sink(withoutFlags(compileFormat("{color_start}{msg}{color_end}")));
    DebuggerSink plain((SinkConfig()));
    setAttribute(0x5B);
    const COORD before = cursor();
    sink.store(SampleMessage(ERR));
    plain.store(SampleMessage(ERR));
    EXPECT_EQ(attribute(), 0x5B);
    EXPECT_EQ(cursor().X, before.X);
    EXPECT_EQ(cursor().Y, before.Y);
}

}  // namespace
