#include "vek/base/console_colors.h"

#include <iostream>

#include "vek/base/environment.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek {

namespace {

bool colourStdout = false;
bool colourStderr = false;

constexpr WORD resetKeeps = 0x7F00;
constexpr WORD resetSets = 0x07;
constexpr WORD underscore = 0x8000;

// One of the two halves of what the console calls a text attribute.
struct Part {
    WORD bitsOfCode[10];  // by ColorSpec::Code
    WORD allBits;
    WORD intensity;
};

constexpr Part foregroundPart = {
    {0, 0x04, 0x02, 0x06, 0x01, 0x05, 0x03, 0x07, 0, 0x07}, 0x0F, 0x08};
constexpr Part backgroundPart = {{0, 0x40, 0x20, 0x60, 0x10, 0x50, 0x30, 0x70, 0, 0}, 0xF0, 0x80};

HANDLE consoleOf(const std::ostream& stream) {
    return GetStdHandle(&stream == &std::cerr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
}

WORD readAttribute(HANDLE console) {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (GetConsoleScreenBufferInfo(console, &info) == 0) {
        throw OsError(GetLastError());
    }
    return info.wAttributes;
}

WORD bitsOf(const Part& part, std::int32_t code) {
    return code >= ColorSpec::black && code <= ColorSpec::defaultColor ? part.bitsOfCode[code]
                                                                       : WORD{0};
}

void applyPart(const std::ostream& stream, const Part& part, std::int32_t code, bool bright) {
    if (code == ColorSpec::keepColor && !bright) {
        return;
    }
    const HANDLE console = consoleOf(stream);
    unsigned attribute = readAttribute(console);
    if (code != ColorSpec::keepColor) {
        attribute = (attribute & ~unsigned{part.allBits}) | bitsOf(part, code);
    }
    if (bright) {
        attribute |= part.intensity;
    }
    if (SetConsoleTextAttribute(console, static_cast<WORD>(attribute)) == 0) {
        throw OsError(GetLastError());
    }
}

bool isCharacterDevice(DWORD standardHandle) {
    return GetFileType(GetStdHandle(standardHandle)) == FILE_TYPE_CHAR;
}

}  // namespace

void initConsoleColors() {
    setConsoleColors(false, false);
    if (hasEnv("VEK_NO_COLOR")) {
        return;
    }
    if (hasEnv("VEK_FORCE_COLOR")) {
        setConsoleColors(true, true);
        return;
    }
    setConsoleColors(isCharacterDevice(STD_OUTPUT_HANDLE), isCharacterDevice(STD_ERROR_HANDLE));
}

void setConsoleColors(bool forStdout, bool forStderr) {
    colourStdout = forStdout;
    colourStderr = forStderr;
}

bool colorEnabled(const std::ostream& stream) {
    if (&stream == &std::cout) {
        return colourStdout;
    }
    return &stream == &std::cerr && colourStderr;
}

std::ostream& applyColor(std::ostream& stream, const ColorSpec& spec) {
    if (spec.force || colorEnabled(stream)) {
        applyPart(stream, backgroundPart, spec.background, spec.backgroundBright);
        applyPart(stream, foregroundPart, spec.foreground, spec.foregroundBright);
    }
    return stream;
}

std::ostream& resetColor(std::ostream& stream, const ColorReset& reset) {
    if (!reset.force && !colorEnabled(stream)) {
        return stream;
    }
    const HANDLE console = consoleOf(stream);
    WORD attribute = readAttribute(console);
    if ((reset.mask & ColorReset::reset) != 0) {
        attribute = static_cast<WORD>((attribute & resetKeeps) | resetSets);
        SetConsoleTextAttribute(console, attribute);
    }
    if ((reset.mask & ColorReset::underline) != 0) {
        SetConsoleTextAttribute(console, static_cast<WORD>(attribute | underscore));
    }
    return stream;
}

}  // namespace vek
