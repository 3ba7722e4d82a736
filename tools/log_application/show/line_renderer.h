// log_application::LineRenderer: a line as the user gets to see it.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/log_application/show/log_line.h"
#include "vek/log/message_format.h"

namespace log_application {

enum class OutputKind {
    text,  // by a format in the keywords of the log's own lines, control characters escaped
    json,  // one object a line
    raw,   // the text of the message, byte for byte
};

class LineRenderer {
  public:
    // The formats of text unless the user gives one: for one process, and for several.
    static constexpr const char* formatForOne =
        "{date} {color_start}[{level}] {agent}{attrs}: {msg}{color_end}";
    static constexpr const char* formatForSeveral =
        "{date} {pid} {color_start}[{level}] {agent}{attrs}: {msg}{color_end}";

    // `format` is for text only; see vek/log/message_format.h. With `useColor` the stream has to be
    // std::cout, and that a console.
    LineRenderer(OutputKind outputKind, const std::string& format, bool useColor);

    // Writes the line and a line feed behind it. A field that is missing is an empty text, 0, or
    // "INVALID" for the level; in JSON it is null.
    void write(std::ostream& stream, const LogLine& line) const;

  private:
    void writeText(std::ostream& stream, const LogLine& line) const;

    const OutputKind kind;
    const std::vector<vek::log::FormatToken> tokens;
    const bool color;
};

// {"time":"2026-11-21T05:40:41.123Z","level":"INFO","logger":"demo","pid":1,"tid":2,"message":"m",
// "attributes":{"key":"value"}}, on one line without an end.
std::string jsonOf(const LogLine& line);

}  // namespace log_application
