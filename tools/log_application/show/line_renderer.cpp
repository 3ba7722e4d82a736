#include "tools/log_application/show/line_renderer.h"

#include "tools/log_application/show/ansi_text.h"
#include "tools/log_application/show/escape.h"
#include "tools/log_application/show/json_object.h"
#include "tools/log_application/show/utc_time.h"
#include "vek/log/message.h"

namespace log_application {

namespace {

std::string shown(const std::string& text) {
    return escapeControls(utf8Of(text));
}

// `milliseconds`, or 0 for a time in another year than 1601 to 9999 in some time zone: the C
// runtime ends the process if it is to format such a year.
std::int64_t presentable(std::int64_t milliseconds) {
    constexpr std::int64_t earliest = -11'644'387'200'000;
    constexpr std::int64_t latest = 253'402'214'400'000;
    return milliseconds >= earliest && milliseconds < latest ? milliseconds : 0;
}

}  // namespace

std::string jsonOf(const LogLine& line) {
    JsonObject object;
    object.add("time", line.when ? std::optional(isoUtc(*line.when)) : std::nullopt);
    object.add("level",
               line.level ? std::optional<std::string>(levelName(*line.level)) : std::nullopt);
    object.add("logger", line.logger);
    object.add("pid", line.pid);
    object.add("tid", line.tid);
    object.add("message", line.text);
    JsonObject attributes;
    for (const auto& [key, value] : line.attributes) {
        attributes.add(key, std::string_view(value));
    }
    object.add("attributes", attributes);
    return object.text();
}

LineRenderer::LineRenderer(OutputKind outputKind, const std::string& format, bool useColor)
    : kind(outputKind), tokens(vek::log::compileFormat(format)), color(useColor) {}

void LineRenderer::write(std::ostream& stream, const LogLine& line) const {
    switch (kind) {
        case OutputKind::text:
            writeText(stream, line);
            break;
        case OutputKind::json:
            stream << jsonOf(line);
            break;
        case OutputKind::raw:
            stream << line.text.value_or("");
            break;
    }
    stream << '\n';
}

void LineRenderer::writeText(std::ostream& stream, const LogLine& line) const {
    vek::log::AttrMessage message(shown(line.logger.value_or("")), shown(line.text.value_or("")),
                                  line.level.value_or(vek::log::INVALID), line.pid.value_or(0));
    message.tid = line.tid.value_or(0);
    message.timestamp = vek::time::RealtimeClock(false);
    message.timestamp += presentable(line.when.value_or(0));
    for (const auto& [key, value] : line.attributes) {
        message.attrs[shown(key)] = shown(value);
    }
    message.printFormatted(stream, tokens, color);
}

}  // namespace log_application
