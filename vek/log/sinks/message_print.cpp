#include <array>
#include <charconv>
#include <string_view>

#include "vek/log/message.h"
#include "vek/log/sinks/level_colors.h"
#include "vek/log/sinks/message_format.h"
#include "vek/log/sinks/time_text.h"

namespace vek::log {

namespace {

constexpr std::streamsize levelWidth = 5;
constexpr std::int64_t millisecondsPerSecond = 1000;

// Unformatted, so that a field width set on the stream has no effect and is kept.
void write(std::ostream& stream, std::string_view text) {
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

// Decimal, whatever base or digit grouping is set on the stream.
template <typename Integer>
void writeDecimal(std::ostream& stream, Integer number) {
    std::array<char, 20> digits;  // enough for the lowest 64-bit number with its sign
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    write(stream, {digits.data(), static_cast<std::size_t>(end - digits.data())});
}

void writeLevel(std::ostream& stream, Level level) {
    const std::streamsize others = stream.width(levelWidth);
    stream << levelName(level);
    stream.width(others);
}

std::int64_t wholeSeconds(const Message& message) {
    return message.timestamp.getValue() / millisecondsPerSecond;
}

// Writes nothing for a message without attributes.
void writeAttrs(std::ostream& stream, const Message& message) {
    if (!message.hasAttrs()) {
        return;
    }
    const auto& attrs = static_cast<const AttrMessage&>(message).attrs;
    if (attrs.empty()) {
        return;
    }
    std::string_view ahead = " (";
    for (const auto& [key, value] : attrs) {
        write(stream, ahead);
        write(stream, key);
        write(stream, " = ");
        write(stream, value);
        ahead = ", ";
    }
    write(stream, ")");
}

void startColor(std::ostream& stream, Level level, bool useColor) {
    if (useColor) {
        applyColor(stream, levelColor(level));
    }
}

void endColor(std::ostream& stream, bool useColor) {
    if (useColor) {
        resetColor(stream, ColorReset());
    }
}

void writeKeyword(std::ostream& stream, const Message& message, std::int32_t keyword,
                  bool useColor) {
    switch (keyword) {
        case keywordLevel:
            return writeLevel(stream, message.level);
        case keywordCategory:
            return write(stream, message.category);
        case keywordMessage:
            return write(stream, message.text);
        case keywordPid:
            return writeDecimal(stream, message.pid);
        case keywordTid:
            return writeDecimal(stream, message.tid);
        case keywordDate:
            return write(stream, dateText(wholeSeconds(message)));
        case keywordTimestampSeconds:
            writeDecimal(stream, wholeSeconds(message));
            return write(stream, " s");
        case keywordAttrs:
            return writeAttrs(stream, message);
        case keywordColorStart:
            return startColor(stream, message.level, useColor);
        case keywordColorEnd:
            return endColor(stream, useColor);
        default:
            return;
    }
}

}  // namespace

std::ostream& Message::printFormatted(std::ostream& stream, const std::vector<FormatToken>& tokens,
                                      bool useColor) const {
    for (const FormatToken& token : tokens) {
        if (!token.text.empty()) {
            write(stream, token.text);
        } else {
            writeKeyword(stream, *this, token.keyword, useColor);
        }
    }
    return stream;
}

std::ostream& Message::printPlain(std::ostream& stream, bool printPids, bool printTids,
                                  bool printTime, bool useColor) const {
    if (printPids) {
        write(stream, "PID=");
        writeDecimal(stream, pid);
        write(stream, " | ");
    }
    if (printTids) {
        write(stream, "TID=");
        writeDecimal(stream, tid);
        write(stream, " | ");
    }
    if (printTime) {
        write(stream, localTimeText(wholeSeconds(*this)));
        write(stream, " | ");
    }
    startColor(stream, level, useColor);
    write(stream, "[");
    writeLevel(stream, level);
    write(stream, "] ");
    write(stream, category);
    writeAttrs(stream, *this);
    write(stream, ": ");
    write(stream, text);
    endColor(stream, useColor);
    return stream;
}

}  // namespace vek::log
