#include "tools/log_application/forward/syslog_message.h"

#include <algorithm>
#include <array>

#include "tools/log_application/connection/endpoint.h"
#include "tools/log_application/show/ansi_text.h"
#include "tools/log_application/show/escape.h"
#include "tools/log_application/show/utc_time.h"
#include "tools/log_application/show/utf8.h"
#include "vek/base/text.h"

namespace log_application {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr const char* nothing = "-";
constexpr std::size_t longestHost = 255;
constexpr std::size_t longestProgram = 48;
constexpr std::size_t longestLogger = 32;
constexpr std::size_t longestName = 32;
constexpr std::uint32_t highestFacility = 23;

constexpr int warning = 4;
constexpr int notice = 5;

struct Facility {
    std::string_view name;
    int number;
};

constexpr std::array<Facility, 20> facilities = {{
    {"kern", 0},      {"user", 1},    {"mail", 2},    {"daemon", 3},  {"auth", 4},
    {"syslog", 5},    {"lpr", 6},     {"news", 7},    {"uucp", 8},    {"cron", 9},
    {"authpriv", 10}, {"ftp", 11},    {"local0", 16}, {"local1", 17}, {"local2", 18},
    {"local3", 19},   {"local4", 20}, {"local5", 21}, {"local6", 22}, {"local7", 23},
}};

// The characters of `text`, each that isn't printable ASCII, or is one of `unwanted`, as "_"; at
// most `longest`.
std::string printable(std::string_view text, std::size_t longest, std::string_view unwanted) {
    std::string out;
    for (std::size_t at = 0; at < text.size() && out.size() < longest;) {
        const Character character = decodeUtf8(text, at);
        const bool isPrintable = character.codePoint > 0x20 && character.codePoint < 0x7F &&
                                 unwanted.find(text[at]) == std::string_view::npos;
        out += isPrintable ? text[at] : '_';
        at += character.size;
    }
    return out;
}

std::string headerField(std::string_view text, std::size_t longest) {
    return text.empty() ? nothing : printable(text, longest, "");
}

// RFC 5424 has years of four digits.
std::string timestamp(std::int64_t milliseconds) {
    const std::string text = isoUtc(milliseconds);
    const bool isYear = text.front() != '+' && text.front() != '-';
    return isYear ? text : nothing;
}

void appendParameter(std::string& out, std::string_view name, std::string_view value) {
    out += ' ';
    out += name;
    out += "=\"";
    for (const char character : escapeControls(utf8Of(value))) {
        if (character == '"' || character == '\\' || character == ']') {
            out += '\\';
        }
        out += character;
    }
    out += '"';
}

void appendSequence(std::string& out, std::uint32_t sequence) {
    out += "[meta";
    appendParameter(out, "sequenceId", std::to_string(sequence));
    out += ']';
}

void appendAttributes(std::string& out, const LogLine& line) {
    if (line.attributes.empty()) {
        return;
    }
    out += "[attributes@32473";
    for (const auto& [key, value] : line.attributes) {
        const std::string name = printable(key, longestName, "=]\"");
        appendParameter(out, name.empty() ? "_" : name, value);
    }
    out += ']';
}

std::string header(int facility, int severity, const std::string& time, const SyslogOrigin& origin,
                   const std::string& pid, const std::string& id) {
    constexpr int severities = 8;
    return "<" + std::to_string(facility * severities + severity) + ">1 " + time + " " +
           headerField(origin.host, longestHost) + " " +
           headerField(origin.program, longestProgram) + " " + pid + " " + id + " ";
}

}  // namespace

std::optional<int> parseFacility(std::string_view text) {
    std::string name(text);
    const auto* const found = std::ranges::find(facilities, vek::toLower(name), &Facility::name);
    if (found != facilities.end()) {
        return found->number;
    }
    const std::optional<std::uint32_t> number = parseNumber(text, highestFacility);
    return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

int severityOf(std::optional<vek::log::Level> level) {
    switch (level.value_or(vek::log::INVALID)) {
        case vek::log::ERR:
            return 3;
        case vek::log::WARN:
            return 4;
        case vek::log::INFO:
            return 6;
        case vek::log::DEBUG:
        case vek::log::TRACE:
            return 7;
        default:
            return notice;
    }
}

std::string syslogMessage(const LogLine& line, const SyslogOrigin& origin, int facility,
                          std::uint32_t sequence) {
    std::string message =
        header(facility, severityOf(line.level), line.when ? timestamp(*line.when) : nothing,
               origin, line.pid ? std::to_string(*line.pid) : nothing,
               headerField(line.logger.value_or(""), longestLogger));
    appendSequence(message, sequence);
    appendAttributes(message, line);
    if (line.text) {
        message += ' ';
        message += byteOrderMark;
        message += escapeControls(utf8Of(*line.text));
    }
    return message;
}

std::string lossMessage(std::uint64_t count, const std::string& host, int facility,
                        std::uint32_t sequence, std::int64_t nowMs, std::uint32_t pid) {
    std::string message = header(facility, warning, timestamp(nowMs), {host, "log_application"},
                                 std::to_string(pid), "lost");
    appendSequence(message, sequence);
    message += "[lost@32473";
    appendParameter(message, "count", std::to_string(count));
    message += "] ";
    message += byteOrderMark;
    message += std::to_string(count) +
               " messages were lost: the collector was away or too slow, and the buffer was full";
    return message;
}

std::string octetCounted(const std::string& message) {
    return std::to_string(message.size()) + " " + message;
}

}  // namespace log_application
