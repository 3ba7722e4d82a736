// log_application::LineRenderer: writes lines as text, JSON or raw bytes.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/log_application/show/log_line.h"
#include "vek/log/sinks/message_format.h"

namespace log_application {

enum class OutputKind {
    text,  // by a format with the keywords of logging.conf, control characters escaped
    json,  // one object a line
    raw,   // the text of the message, byte for byte
};

class LineRenderer {
  public:
    // The default formats of text for one process and for several.
    static constexpr const char* formatForOne =
        "{date} {color_start}[{level}] {agent}{attrs}: {msg}{color_end}";
    static constexpr const char* formatForSeveral =
        "{date} {pid} {color_start}[{level}] {agent}{attrs}: {msg}{color_end}";

    // `format` is used for text only; see vek/log/sinks/message_format.h. With `useColor` lines may
    // only be written to std::cout, which must be a console.
    LineRenderer(OutputKind outputKind, const std::string& format, bool useColor);

    // Writes the line and a line feed. A missing field is written as an empty text, as 0, or as
    // "INVALID" for the level; in JSON as null. In text a time before 1601 or after 9999 is
    // written as 0, since the C runtime can't format it.
    void write(std::ostream& stream, const LogLine& line) const;

  private:
    void writeText(std::ostream& stream, const LogLine& line) const;

    const OutputKind kind;
    const std::vector<vek::log::FormatToken> tokens;
    const bool color;
};

// {"time":"2026-11-21T05:40:41.123Z","level":"INFO","logger":"demo","pid":1,"tid":2,"message":"m",
// "attributes":{"key":"value"}}, without a line feed.
std::string jsonOf(const LogLine& line);

}  // namespace log_application
