// Colours of the console. A colour is an attribute that the console gives to the text written next:
// these functions act on the console at once and write nothing to the stream that is passed.
//
// A program starts without colours; initConsoleColors decides about them once, before there are
// other threads. The decision is not guarded: initConsoleColors and setConsoleColors must not run
// while another thread uses these functions. The others are thread-safe, but the colours of two
// threads that write to one console at the same time mix.
#pragma once

#include <cstdint>
#include <ostream>

namespace vek {

// How to colour the text written next.
struct ColorSpec {
    // The colours. Any other number has the effect of noColor.
    enum Code : std::int32_t {
        keepColor = -1,  // not changed
        black = 0,
        red = 1,
        green = 2,
        yellow = 3,
        blue = 4,
        magenta = 5,
        cyan = 6,
        white = 7,
        noColor = 8,       // cleared
        defaultColor = 9,  // the console's own: white on black
    };

    std::int32_t foreground = keepColor;
    bool foregroundBright = false;  // adds intensity, also to a colour that is kept
    std::int32_t background = keepColor;
    bool backgroundBright = false;
    bool force = false;  // also if colours are off for the stream
};

// How to end a colour. The bits of `mask` are combined by |.
struct ColorReset {
    static constexpr std::uint32_t reset = 1;
    static constexpr std::uint32_t underline = 2;

    std::uint32_t mask = reset;
    bool force = false;  // also if colours are off for the stream
};

// Decides whether std::cout and std::cerr get colours: never if the environment variable
// VEK_NO_COLOR exists, else always if VEK_FORCE_COLOR exists, whatever their values; else those
// that are character devices. Calls GetEnvironmentVariableA, GetStdHandle and GetFileType.
//
// The device "nul" deliberately counts as a console: it is a character device, too.
void initConsoleColors();

// Overrides that decision.
void setConsoleColors(bool forStdout, bool forStderr);

// Returns whether `stream` gets colours. Always false for other streams than std::cout and
// std::cerr.
bool colorEnabled(const std::ostream& stream);

// Sets the colour of the text written next to the console of `stream`, first the background, then
// the foreground. Does nothing if colours are off for the stream and `spec` doesn't force them. A
// forced colour on a stream other than std::cerr acts on the console of the standard output.
// Returns `stream`. Calls GetConsoleScreenBufferInfo and SetConsoleTextAttribute.
//
// Throws OsError if one of these fails, as they do where there is no console.
std::ostream& applyColor(std::ostream& stream, const ColorSpec& spec);

// Ends a colour, under the same conditions. ColorReset::reset sets white on black, whatever the
// console had before the first colour; ColorReset::underline underlines the text written next.
// Returns `stream`.
//
// Throws OsError if the present attribute can't be read. A failure to set the new one is ignored.
std::ostream& resetColor(std::ostream& stream, const ColorReset& reset);

}  // namespace vek
