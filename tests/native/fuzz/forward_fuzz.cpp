// What goes to a log collector: messages, its address, and the buffer. Messages are read back by a
// parser of RFC 5424 of its own.
#include <cctype>
#include <deque>

#include "tests/native/fuzz/fuzz.h"
#include "tools/log_application/forward/collector_address.h"
#include "tools/log_application/forward/send_buffer.h"
#include "tools/log_application/forward/syslog_message.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"

namespace {

using namespace log_application;
using vek::test::require;

// Reads a message from its start; every step ends the process if the grammar doesn't hold.
class Reader {
  public:
    explicit Reader(const std::string& message) : text(message) {}

    void skip(const std::string& expected) {
        require(text.compare(at, expected.size(), expected) == 0, "a message has its separators");
        at += expected.size();
    }

    std::string until(char end, std::size_t longest) {
        const std::size_t found = text.find(end, at);
        require(found != std::string::npos && found != at && found - at <= longest,
                "a field has at least one character, and not too many");
        std::string field = text.substr(at, found - at);
        for (const char character : field) {
            require(character > ' ' && character < 0x7F, "a field is printable ASCII");
        }
        at = found + 1;
        return field;
    }

    // The parameters of an element behind its name; the values unescaped.
    std::vector<std::pair<std::string, std::string>> parameters() {
        std::vector<std::pair<std::string, std::string>> found;
        while (text.at(at) == ' ') {
            ++at;
            std::string name = until('=', 32);
            require(name.find_first_of("]\"") == std::string::npos, "a name is a name");
            skip("\"");
            std::string value;
            for (; text.at(at) != '"'; ++at) {
                require(text[at] != ']', "a bracket is escaped");
                if (text[at] == '\\') {
                    ++at;
                    require(text.at(at) == '"' || text[at] == '\\' || text[at] == ']',
                            "only these are escaped");
                }
                value += text[at];
            }
            ++at;
            found.emplace_back(std::move(name), std::move(value));
        }
        skip("]");
        return found;
    }

    bool isAt(const std::string& expected) const {
        return text.compare(at, expected.size(), expected) == 0;
    }

    std::string rest() const { return text.substr(at); }

  private:
    const std::string& text;
    std::size_t at = 0;
};

LogLine lineFrom(FuzzedDataProvider& input) {
    LogLine line;
    const auto text = [&input] { return input.ConsumeRandomLengthString(60); };
    if (input.ConsumeBool()) {
        line.when = input.ConsumeIntegral<std::int64_t>();
        line.pid = input.ConsumeIntegral<std::uint32_t>();
        line.level = static_cast<vek::log::Level>(input.ConsumeIntegralInRange(0, 7));
    }
    if (input.ConsumeBool()) {
        line.logger = text();
        line.text = text();
    }
    for (int i = input.ConsumeIntegralInRange(0, 3); i > 0; --i) {
        std::string key = text();
        line.attributes[std::move(key)] = text();
    }
    return line;
}

void checkMessage(FuzzedDataProvider& input) {
    const LogLine line = lineFrom(input);
    const SyslogOrigin origin = {input.ConsumeRandomLengthString(300),
                                 input.ConsumeRandomLengthString(60)};
    const int facility = input.ConsumeIntegralInRange(0, 23);
    const std::uint32_t number = input.ConsumeIntegralInRange(1u, 2'147'483'647u);
    const std::string message = syslogMessage(line, origin, facility, number);
    Reader reader(message);
    reader.skip("<" + std::to_string(facility * 8 + severityOf(line.level)) + ">1 ");
    const std::string time = reader.until(' ', 24);
    require(time == "-" || (line.when && time.size() == 24 && time.back() == 'Z'),
            "a time has its form");
    require((reader.until(' ', 255) == "-") || !origin.host.empty(), "the host");
    require((reader.until(' ', 48) == "-") || !origin.program.empty(), "the program");
    require(reader.until(' ', 10) == (line.pid ? std::to_string(*line.pid) : "-"), "the pid");
    require(reader.until(' ', 32) == "-" || !line.logger.value_or("").empty(), "the logger");
    reader.skip("[meta");
    const auto meta = reader.parameters();
    require(meta.size() == 1 && meta[0].first == "sequenceId" &&
                meta[0].second == std::to_string(number),
            "the number");
    if (!line.attributes.empty()) {
        reader.skip("[attributes@32473");
        const auto attributes = reader.parameters();
        require(attributes.size() == line.attributes.size(), "each attribute is there");
        auto sent = line.attributes.begin();
        for (const auto& attribute : attributes) {
            require(attribute.second == escapeControls((sent++)->second), "with its value");
        }
    }
    if (line.text) {
        reader.skip(" \xEF\xBB\xBF");
        require(reader.rest() == escapeControls(*line.text), "the text");
    } else {
        require(reader.rest().empty(), "nothing without a text");
    }
    for (const char character : message) {
        require(static_cast<unsigned char>(character) >= 0x20 && character != 0x7F,
                "no control character");
    }
}

void checkAddress(const std::string& text) {
    for (const std::string& whole : {text, "syslog+tcp://" + text}) {
        try {
            const CollectorAddress address = parseCollectorAddress(whole);
            require(address.port != 0 && !address.host.empty(), "an address has both");
            const CollectorAddress again = parseCollectorAddress("syslog+tcp://" + address.text());
            require(again.host == address.host && again.port == address.port &&
                        again.isNumeric == address.isNumeric,
                    "an address is written as it is read");
        } catch (const Failure& failure) {
            require(failure.exitCode() == exitUsage && !failure.whatNext().empty(),
                    "a refusal says what to do");
        }
    }
}

// Random calls: every frame added arrives whole, in order, or is counted.
void checkBuffer(FuzzedDataProvider& input) {
    std::uint64_t reported = 0;
    const std::size_t capacity = input.ConsumeIntegralInRange<std::size_t>(1, 5);
    SendBuffer buffer(capacity, [&reported](std::uint64_t count, std::uint32_t number) {
        reported += count;
        return "<" + std::to_string(number) + ">";
    });
    std::string stream;  // what this connection has brought
    std::uint32_t highest = 0;
    std::uint64_t added = 0;
    std::uint64_t arrived = 0;
    std::int64_t now = 0;
    // The numbers in whole frames of the stream rise; those above all before are new.
    const auto readStream = [&] {
        std::uint32_t before = 0;
        for (std::size_t at = 0; stream.find('>', at) != std::string::npos;) {
            require(stream[at] == '<', "a frame follows on a frame");
            const std::size_t end = stream.find('>', at);
            const std::uint32_t number =
                static_cast<std::uint32_t>(std::stoul(stream.substr(at + 1, end - at - 1)));
            require(number > before, "the numbers rise");
            before = number;
            arrived += number > highest ? 1 : 0;
            highest = std::max(highest, number);
            at = end + 1;
        }
        stream.clear();
    };
    for (int i = 0; i < 100 && input.remaining_bytes() != 0; ++i) {
        now += input.ConsumeIntegralInRange(0, 40'000);
        switch (input.ConsumeIntegralInRange(0, 4)) {
            case 0:
            case 1:
                ++added;
                buffer.add([](std::uint32_t number) { return "<" + std::to_string(number) + ">"; });
                break;
            case 2: {
                const std::string next =
                    buffer.next(input.ConsumeIntegralInRange<std::size_t>(0, 20));
                const std::size_t size = input.ConsumeIntegralInRange<std::size_t>(0, next.size());
                stream += next.substr(0, size);
                buffer.written(size, now);
                break;
            }
            case 3:
                buffer.settle(now);
                break;
            default:
                readStream();
                buffer.rewind(now, input.ConsumeIntegralInRange(0, 60'000));
                break;
        }
        require(buffer.waiting() <= 2 * capacity + 1, "the buffer has its limit");
    }
    const std::string left = buffer.next(100'000);
    stream += left;
    readStream();
    // The reports have numbers of their own.
    require(arrived + reported + buffer.unreported() >= added, "every frame is accounted for");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkAddress(vek::test::textOf(data, size));
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        checkMessage(input);
    } else {
        checkBuffer(input);
    }
    return 0;
}
