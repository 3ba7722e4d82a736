// Colours of the console. A colour is an attribute of the console that what is written next gets:
// these functions act on the console at once and write nothing to the stream that they are given.
//
// A program starts without colours; initConsoleColors decides about them once, ahead of any thread.
// Nothing guards the decision afterwards: initConsoleColors and setConsoleColors must not run while
// another thread uses these functions. The others are safe from any thread, but two threads that
// colour one console at once get a mixture.
#pragma once

#include <cstdint>
#include <ostream>

namespace vek {

// How to colour what is written next.
struct ColorSpec {
    // The colours. Any other number clears as noColor does.
    enum Code : std::int32_t {
        keepColor = -1,  // the part isn't touched
        black = 0,
        red = 1,
        green = 2,
        yellow = 3,
        blue = 4,
        magenta = 5,
        cyan = 6,
        white = 7,
        noColor = 8,       // the part is cleared and nothing set
        defaultColor = 9,  // the console's own: white on black
    };

    std::int32_t foreground = keepColor;
    bool foregroundBright = false;  // adds intensity, also to a colour that is kept
    std::int32_t background = keepColor;
    bool backgroundBright = false;
    bool force = false;  // also where colours are off for the stream
};

// What ends a colour. The bits of `mask` are combined by |.
struct ColorReset {
    static constexpr std::uint32_t reset = 1;
    static constexpr std::uint32_t underline = 2;

    std::uint32_t mask = reset;
    bool force = false;  // also where colours are off for the stream
};

// Decides whether std::cout and std::cerr get colours: never if the environment variable
// VEK_NO_COLOR exists, else always if VEK_FORCE_COLOR exists, whatever their values; else each that
// is a character device. Stands on GetEnvironmentVariableA, GetStdHandle and GetFileType.
//
// The device "nul" counts as a console here, deliberately: it is a character device like one.
void initConsoleColors();

// Overrides that decision.
void setConsoleColors(bool forStdout, bool forStderr);

// Whether `stream` gets colours. Always false for other streams than std::cout and std::cerr.
bool colorEnabled(const std::ostream& stream);

// Colours what is written next on the console of `stream`, first the background, then the
// foreground. Does nothing if colours are off for the stream and the ColorSpec doesn't force them.
// A forced colour on a stream other than std::cerr acts on the standard output's console. The
// result is `stream`. Stands on GetConsoleScreenBufferInfo and SetConsoleTextAttribute.
//
// Throws OsError if one of these fails, as they do where there is no console.
std::ostream& applyColor(std::ostream& stream, const ColorSpec& spec);

// Ends a colour, under the same conditions. ColorReset::reset makes it white on black, whatever was
// there before the first colour; ColorReset::underline underlines what is written next. The result
// is `stream`.
//
// Throws OsError if the present attribute can't be read. A failure of setting the new one is
// ignored.
std::ostream& resetColor(std::ostream& stream, const ColorReset& reset);

}  // namespace vek
