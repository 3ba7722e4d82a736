// The colours on a real console.
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/console_fixture.h"
#include "vek/base/console_colors.h"
#include "vek/exception.h"

namespace {

using vek::applyColor;
using vek::colorEnabled;
using vek::ColorReset;
using vek::ColorSpec;
using vek::resetColor;

constexpr std::int32_t keep = ColorSpec::keepColor;

class Console : public support::ConsoleTest {
  protected:
    // The attribute that `spec` makes of `before`.
    int applied(const ColorSpec& spec, int before) const {
        setAttribute(before);
        EXPECT_EQ(&applyColor(std::cout, spec), &std::cout);
        return attribute();
    }

    int resetFrom(int before, std::uint32_t mask) const {
        setAttribute(before);
        EXPECT_EQ(&resetColor(std::cout, {mask, false}), &std::cout);
        return attribute();
    }

    COORD cursor() const {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        GetConsoleScreenBufferInfo(output, &info);
        return info.dwCursorPosition;
    }
};

// A second buffer of the console, with an attribute of its own.
class SecondBuffer {
  public:
    SecondBuffer() { EXPECT_NE(handle, INVALID_HANDLE_VALUE); }
    ~SecondBuffer() { CloseHandle(handle); }
    SecondBuffer(const SecondBuffer&) = delete;
    SecondBuffer& operator=(const SecondBuffer&) = delete;

    const HANDLE handle =
        CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, CONSOLE_TEXTMODE_BUFFER, nullptr);
};

struct CodeRow {
    std::int32_t code;
    WORD foregroundBits;
    WORD backgroundBits;
};

constexpr CodeRow codeRows[] = {
    {0, 0x00, 0x00},
    {1, 0x04, 0x40},
    {2, 0x02, 0x20},
    {3, 0x06, 0x60},
    {4, 0x01, 0x10},
    {5, 0x05, 0x50},
    {6, 0x03, 0x30},
    {7, 0x07, 0x70},
    {8, 0x00, 0x00},
    {9, 0x07, 0x00},
    // No colours: cleared like 8.
    {10, 0x00, 0x00},
    {-2, 0x00, 0x00},
    {1000000, 0x00, 0x00},
};

TEST_F(Console, HasColors) {
    vek::setConsoleColors(false, false);
    SetEnvironmentVariableA("VEK_NO_COLOR", nullptr);
    SetEnvironmentVariableA("VEK_FORCE_COLOR", nullptr);
    vek::initConsoleColors();
    EXPECT_TRUE(colorEnabled(std::cout));
    EXPECT_TRUE(colorEnabled(std::cerr));
    SetEnvironmentVariableA("VEK_NO_COLOR", "");
    vek::initConsoleColors();
    SetEnvironmentVariableA("VEK_NO_COLOR", nullptr);
    EXPECT_FALSE(colorEnabled(std::cout));
    EXPECT_FALSE(colorEnabled(std::cerr));
}

TEST_F(Console, EachForegroundReplacesTheOldOne) {
    for (const CodeRow& row : codeRows) {
        for (const int before : {0x07, 0x2F, 0xF0}) {
            const int background = before & 0xF0;
            EXPECT_EQ(applied({row.code, false, keep, false, false}, before),
                      background | row.foregroundBits)
                << row.code;
            EXPECT_EQ(applied({row.code, true, keep, false, false}, before),
                      background | row.foregroundBits | 0x08)
                << row.code;
        }
    }
}

TEST_F(Console, EachBackgroundReplacesTheOldOne) {
    for (const CodeRow& row : codeRows) {
        for (const int before : {0x07, 0xF2, 0x0F}) {
            const int foreground = before & 0x0F;
            EXPECT_EQ(applied({keep, false, row.code, false, false}, before),
                      foreground | row.backgroundBits)
                << row.code;
            EXPECT_EQ(applied({keep, false, row.code, true, false}, before),
                      foreground | row.backgroundBits | 0x80)
                << row.code;
        }
    }
}

TEST_F(Console, BothPartsAreSetAtOnce) {
    for (const CodeRow& front : codeRows) {
        for (const CodeRow& back : codeRows) {
            EXPECT_EQ(applied({front.code, false, back.code, true, false}, 0x07),
                      front.foregroundBits | back.backgroundBits | 0x80);
        }
    }
}

TEST_F(Console, BrightnessAloneKeepsTheColor) {
    EXPECT_EQ(applied({keep, true, keep, false, false}, 0x24), 0x2C);
    EXPECT_EQ(applied({keep, false, keep, true, false}, 0x24), 0xA4);
    EXPECT_EQ(applied({keep, true, keep, true, false}, 0x24), 0xAC);
    EXPECT_EQ(applied({keep, true, keep, true, false}, 0xAC), 0xAC) << "it is bright already";
}

TEST_F(Console, ColorThatKeepsAllChangesNothing) {
    EXPECT_EQ(applied(ColorSpec(), 0x5B), 0x5B);
}

TEST_F(Console, BitsAboveTheColorsAreKept) {
    EXPECT_EQ(applied({1, true, 6, false, false}, 0x8007), 0x803C);
    EXPECT_EQ(applied({1, true, 6, false, false}, 0x4007), 0x403C);
}

TEST_F(Console, NothingHappensWhereColorsAreOff) {
    vek::setConsoleColors(false, true);
    EXPECT_EQ(applied({1, true, 6, false, false}, 0x5B), 0x5B);
    EXPECT_EQ(resetFrom(0x5B, 3), 0x5B);
}

TEST_F(Console, ForcedColorIsSetWhereColorsAreOff) {
    vek::setConsoleColors(false, false);
    EXPECT_EQ(applied({1, true, 6, false, true}, 0x07), 0x3C);
    resetColor(std::cout, {ColorReset::reset, true});
    EXPECT_EQ(attribute(), 0x07);
}

TEST_F(Console, ForcedColorOnAnotherStreamActsOnTheStandardOutput) {
    const SecondBuffer other;
    SetStdHandle(STD_ERROR_HANDLE, other.handle);
    const WORD otherAttribute = attributeOf(other.handle);
    std::ostringstream text;
    EXPECT_EQ(&applyColor(text, {2, false, keep, false, true}), &text);
    EXPECT_EQ(attribute(), 0x02);
    EXPECT_EQ(&resetColor(text, {ColorReset::underline, true}), &text);
    EXPECT_EQ(attribute(), 0x8002);
    EXPECT_EQ(attributeOf(other.handle), otherAttribute);
    EXPECT_EQ(text.str(), "");
}

TEST_F(Console, StandardErrorIsColoredByItself) {
    const SecondBuffer other;
    SetStdHandle(STD_ERROR_HANDLE, other.handle);
    ASSERT_NE(SetConsoleTextAttribute(other.handle, 0x5B), 0);
    vek::setConsoleColors(false, true);
    applyColor(std::cerr, {2, false, keep, false, false});
    EXPECT_EQ(attributeOf(other.handle), 0x52);
    resetColor(std::cerr, ColorReset());
    EXPECT_EQ(attributeOf(other.handle), 0x07);
    EXPECT_EQ(attribute(), whiteOnBlack);
}

TEST_F(Console, ResetGivesWhiteOnBlackWhateverWasThere) {
    for (const int before : {0x00, 0x07, 0x3C, 0xFF}) {
        EXPECT_EQ(resetFrom(before, ColorReset::reset), 0x07);
    }
    applied({1, true, keep, false, false}, 0x5B);
    resetColor(std::cout, ColorReset());
    EXPECT_EQ(attribute(), 0x07) << "the colour ahead of the first one isn't restored";
}

TEST_F(Console, ResetEndsTheUnderlineAndKeepsTheOtherBits) {
    EXPECT_EQ(resetFrom(0x803C, ColorReset::reset), 0x07);
    EXPECT_EQ(resetFrom(0x403C, ColorReset::reset), 0x4007);
}

TEST_F(Console, UnderlineIsAddedToTheColor) {
    EXPECT_EQ(resetFrom(0x3C, ColorReset::underline), 0x803C);
    EXPECT_EQ(resetFrom(0x3C, ColorReset::reset | ColorReset::underline), 0x8007);
}

TEST_F(Console, ResetOfNothingChangesNothing) {
    EXPECT_EQ(resetFrom(0x3C, 0), 0x3C);
    EXPECT_EQ(resetFrom(0x3C, 4), 0x3C);
}

TEST_F(Console, NothingIsWritten) {
    std::cout.flush();
    const COORD before = cursor();
    applyColor(std::cout, {1, true, 6, true, false});
    resetColor(std::cout, {3, false});
    std::cout.flush();
    EXPECT_EQ(cursor().X, before.X);
    EXPECT_EQ(cursor().Y, before.Y);
}

TEST_F(Console, TextBetweenColorAndResetIsColored) {
    std::cout << "\n" << std::flush;
    const COORD start = cursor();
    std::cout << "a";
    applyColor(std::cout, {1, true, 6, false, false});
    std::cout << "b";
    resetColor(std::cout, ColorReset());
    std::cout << "c" << std::flush;
    WORD attributes[3] = {};
    char characters[3] = {};
    DWORD count = 0;
    ASSERT_NE(ReadConsoleOutputCharacterA(output, characters, 3, start, &count), 0);
    EXPECT_EQ(std::string(characters, 3), "abc");
    ASSERT_NE(ReadConsoleOutputAttribute(output, attributes, 3, start, &count), 0);
    EXPECT_EQ(attributes[0], 0x07);
    EXPECT_EQ(attributes[1], 0x3C);
    EXPECT_EQ(attributes[2], 0x07);
    std::cout << "\n";
}

// A console that may be read and not changed.
TEST_F(Console, ColorThatCannotBeSetIsAnErrorAndAResetIsNot) {
    const HANDLE readOnly = CreateFileA("CONOUT$", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(readOnly, INVALID_HANDLE_VALUE);
    attributeOf(readOnly);
    ASSERT_EQ(SetConsoleTextAttribute(readOnly, 0x07), 0) << "it may be changed";
    const DWORD expected = GetLastError();
    SetStdHandle(STD_OUTPUT_HANDLE, readOnly);
    try {
        applyColor(std::cout, {1, false, keep, false, false});
        ADD_FAILURE() << "nothing was thrown";
    } catch (const vek::OsError& thrown) {
        EXPECT_EQ(thrown.code(), expected);
    }
    EXPECT_NO_THROW(resetColor(std::cout, {3, false}));
    CloseHandle(readOnly);
}

}  // namespace
