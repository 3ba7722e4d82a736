#include "tools/log_application/show/log_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "vek/base/text.h"
#include "vek/exception.h"
#include "vek/log/telegram.h"

namespace log_application {

namespace {

using vek::log::Telegram;

constexpr std::string_view messageType = "message:";
constexpr std::array<std::string_view, 8> knownKeys = {"agent", "attr_keys", "attr_values", "msg",
                                                       "pid",   "scope",     "tid",         "when"};
// The keys behind the text, in their order.
constexpr std::array<std::string_view, 4> keysBehindText = {"pid", "scope", "tid", "when"};

std::optional<std::string> textOf(const Telegram& telegram, std::string_view key) {
    const std::string& value = telegram.param(key);
    return &value == &Telegram::noParam ? std::nullopt : std::optional(value);
}

template <class Number>
std::optional<Number> numberOf(const Telegram& telegram, std::string_view key) {
    const std::string& value = telegram.param(key);
    Number number = 0;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<vek::log::Level> levelOf(const Telegram& telegram) {
    try {
        return vek::log::parseLevel(telegram.param("scope"));
    } catch (const vek::UsageError&) {
        return std::nullopt;
    }
}

std::map<std::string, std::string> attributesOf(const Telegram& telegram) {
    const std::string& keyText = telegram.param("attr_keys");
    const std::string& valueText = telegram.param("attr_values");
    std::map<std::string, std::string> attributes;
    if (keyText.empty() && valueText.empty()) {
        return attributes;
    }
    std::vector<std::string> keys;
    std::vector<std::string> values;
    vek::split(keyText, '|', keys, false, true);
    vek::split(valueText, '|', values, false, true);
    if (keys.size() == values.size()) {
        for (std::size_t i = 0; i < keys.size(); ++i) {
            attributes.emplace(keys[i], values[i]);
        }
    }
    if (attributes.size() != keys.size()) {
        attributes = {{keyText, valueText}};
    }
    return attributes;
}

LogLine lineOf(const Telegram& telegram) {
    LogLine line;
    line.when = numberOf<std::int64_t>(telegram, "when");
    line.level = levelOf(telegram);
    line.logger = textOf(telegram, "agent");
    line.pid = numberOf<std::uint32_t>(telegram, "pid");
    line.tid = numberOf<std::uint32_t>(telegram, "tid");
    line.text = textOf(telegram, "msg");
    line.attributes = attributesOf(telegram);
    return line;
}

// True if all keys are known and in the order in which a process writes them. Otherwise the text
// holds separators, and parts of it were taken for keys.
bool isPlain(std::string_view payload) {
    std::string_view previous;
    for (std::size_t start = messageType.size(); start <= payload.size();) {
        const std::size_t end = std::min(payload.find('\x1F', start), payload.size());
        const std::string_view piece = payload.substr(start, end - start);
        const std::string_view key = piece.substr(0, piece.find('='));
        if (key <= previous || std::ranges::find(knownKeys, key) == knownKeys.end()) {
            return false;
        }
        previous = key;
        start = end + 1;
    }
    return true;
}

// Parses a telegram whose text holds separators: the text is everything from the first "msg=" to
// the last occurrence of the keys behind it. Returns none if the telegram doesn't have this form.
std::optional<LogLine> rejoined(std::string_view payload) {
    constexpr std::string_view textKey = "\x1Fmsg=";
    const std::size_t textAt = payload.find(textKey);
    if (textAt == std::string_view::npos) {
        return std::nullopt;
    }
    std::size_t behindText = payload.size();
    for (auto key = keysBehindText.rbegin(); key != keysBehindText.rend(); ++key) {
        const std::string piece = "\x1F" + std::string(*key) + "=";
        behindText = payload.substr(0, behindText).rfind(piece);
        if (behindText == std::string_view::npos || behindText < textAt + textKey.size()) {
            return std::nullopt;
        }
    }
    Telegram others;
    others.parse(std::string(payload.substr(0, textAt)) + std::string(payload.substr(behindText)));
    LogLine line = lineOf(others);
    line.text = payload.substr(textAt + textKey.size(), behindText - textAt - textKey.size());
    return line;
}

}  // namespace

std::optional<LogLine> parseLogLine(std::string_view payload) {
    Telegram telegram;
    telegram.parse(payload);
    if (!payload.starts_with(messageType)) {
        return std::nullopt;
    }
    if (!isPlain(payload)) {
        if (std::optional<LogLine> line = rejoined(payload)) {
            return line;
        }
    }
    return lineOf(telegram);
}

}  // namespace log_application
