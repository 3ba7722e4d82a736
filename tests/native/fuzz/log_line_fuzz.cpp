// The lines that a process sends, as the log's client reads and shows them. JSON is read back by a
// parser that isn't this system's.
#include <array>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/native/fuzz/fuzz.h"
#include "tools/log_application/show/line_renderer.h"
#include "vek/log/telegram.h"

namespace {

using namespace log_application;
using nlohmann::json;
using vek::log::Telegram;
using vek::test::require;

// A text as JSON carries it; what is no UTF-8 is another text there.
bool isText(const json& value, const std::string& text) {
    try {
        return value.get<std::string>() == json::parse(json(text).dump()).get<std::string>();
    } catch (const json::type_error&) {
        return value.get<std::string>().find("\xEF\xBF\xBD") != std::string::npos;
    }
}

template <class Value>
bool isSame(const json& member, const std::optional<Value>& value) {
    if (!value) {
        return member.is_null();
    }
    if constexpr (std::is_same_v<Value, std::string>) {
        return isText(member, *value);
    } else {
        return member.get<Value>() == *value;
    }
}

void checkJson(const LogLine& line) {
    const std::string text = jsonOf(line);
    require(text.find('\n') == std::string::npos, "an object stands on one line");
    const json object = json::parse(text);
    require(object.size() == 7, "an object has all members");
    require(object["time"].is_null() == !line.when, "a time is there if there is one");
    require(isSame(object["level"],
                   line.level ? std::optional<std::string>(levelName(*line.level)) : std::nullopt),
            "the level");
    require(isSame(object["logger"], line.logger), "the logger");
    require(isSame(object["pid"], line.pid), "the pid");
    require(isSame(object["tid"], line.tid), "the tid");
    require(isSame(object["message"], line.text), "the message");
    require(object["attributes"].is_object(), "the attributes");
    for (const auto& [key, value] : line.attributes) {
        const auto found = object["attributes"].find(key);
        require(found == object["attributes"].end() || isText(*found, value) ||
                    line.attributes.size() > 1,
                "an attribute has its value");
    }
}

void checkShown(const LogLine& line) {
    checkJson(line);
    std::ostringstream shown;
    LineRenderer(OutputKind::text, LineRenderer::formatForSeveral, false).write(shown, line);
    const std::string text = shown.str();
    require(text.find('\n') == text.size() - 1, "a line is one line");
    for (const char character : text.substr(0, text.size() - 1)) {
        require(static_cast<unsigned char>(character) >= 0x20 && character != 0x7F,
                "a line holds no control character");
    }
    std::ostringstream raw;
    LineRenderer(OutputKind::raw, "", false).write(raw, line);
    require(raw.str() == line.text.value_or("") + "\n", "raw is the text itself");
}

// Whatever came.
void checkPayload(const std::string& payload) {
    try {
        const std::optional<LogLine> line = parseLogLine(payload);
        require(line.has_value() == payload.starts_with("message:"), "the type tells a line");
        if (line) {
            checkShown(*line);
        }
    } catch (const Telegram::ParseError&) {
        require(payload.find(':') == std::string::npos, "any text with a colon is a telegram");
    }
}

std::string withoutSeparators(std::string text) {
    std::erase(text, '\x1F');
    std::erase(text, '|');
    return text;
}

void addAttributes(Telegram& telegram, const LogLine& line) {
    std::string keys;
    std::string values;
    for (const auto& [key, value] : line.attributes) {
        keys += (keys.empty() ? "" : "|") + key;
        values += (keys == key ? "" : "|") + value;
    }
    if (!line.attributes.empty()) {
        telegram.addParam("attr_keys", keys);
        telegram.addParam("attr_values", values);
    }
}

// A text that any process may log comes out as it went in, and nothing of it is taken for something
// else.
void checkMessage(FuzzedDataProvider& input) {
    Telegram telegram;
    telegram.type = "message";
    LogLine sent;
    sent.logger = input.ConsumeRandomLengthString(5);
    sent.logger = withoutSeparators(*sent.logger);
    for (int i = input.ConsumeIntegralInRange(0, 2); i > 0; --i) {
        // Only an empty one isn't told from none.
        std::string key = "k" + withoutSeparators(input.ConsumeRandomLengthString(3));
        sent.attributes[std::move(key)] = withoutSeparators(input.ConsumeRandomLengthString(3));
    }
    sent.pid = input.ConsumeIntegral<std::uint32_t>();
    sent.tid = input.ConsumeIntegral<std::uint32_t>();
    sent.when = input.ConsumeIntegral<std::int64_t>();
    sent.level = static_cast<vek::log::Level>(input.ConsumeIntegralInRange(0, 6));
    sent.text = input.ConsumeRandomLengthString(90);
    telegram.addParam("agent", *sent.logger);
    addAttributes(telegram, sent);
    telegram.addParam("msg", *sent.text);
    telegram.addParam("pid", std::int64_t{*sent.pid});
    telegram.addParam("scope", std::string(levelName(*sent.level)));
    telegram.addParam("tid", std::int64_t{*sent.tid});
    telegram.addParam("when", *sent.when);
    std::string payload;
    telegram.serialize(payload);
    const std::optional<LogLine> line = parseLogLine(payload);
    require(line && line->isComplete(), "a message is a line with all that it needs");
    require(line->text == sent.text, "the text is what was sent");
    require(line->logger == sent.logger && line->pid == sent.pid && line->tid == sent.tid &&
                line->when == sent.when && line->level == sent.level,
            "the fields are what was sent");
    require(line->attributes == sent.attributes, "the attributes are what was sent");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const vek::test::SilentErrors silent;
    checkPayload(vek::test::textOf(data, size));
    FuzzedDataProvider input(data, size);
    checkMessage(input);
    return 0;
}
