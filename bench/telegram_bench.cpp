// telegram_bench: parsing and serializing a telegram, compared with a split and a join written by
// hand.
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "vek/log/telegram.h"

namespace {

constexpr int rounds = 301;
constexpr int telegramsPerRound = 500;
constexpr double target = 1.5;

// Keeps the compiler from removing work whose result is never read.
volatile std::size_t seen = 0;

struct Pieces {
    std::string type;
    std::vector<std::pair<std::string, std::string>> params;
};

Pieces splitText(std::string_view text) {
    Pieces pieces;
    const std::size_t colon = text.find(':');
    pieces.type = text.substr(0, colon);
    text.remove_prefix(colon + 1);
    while (!text.empty()) {
        const std::size_t end = text.find('\x1F');
        const std::string_view piece = text.substr(0, end);
        const std::size_t equals = piece.find('=');
        if (equals == std::string_view::npos) {
            pieces.params.emplace_back(piece, "");
        } else {
            pieces.params.emplace_back(piece.substr(0, equals), piece.substr(equals + 1));
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return pieces;
}

std::string joinText(const Pieces& pieces) {
    std::string text = pieces.type + ":";
    for (std::size_t i = 0; i < pieces.params.size(); ++i) {
        if (i != 0) {
            text += '\x1F';
        }
        text += pieces.params[i].first;
        if (!pieces.params[i].second.empty()) {
            text += '=';
            text += pieces.params[i].second;
        }
    }
    return text;
}

template <class Work>
auto repeated(Work work) {
    return [=] {
        for (int i = 0; i < telegramsPerRound; ++i) {
            seen = work();
        }
    };
}

void measure(const std::string& name, const std::string& text) {
    using vek_bench::compare;
    compare(name + ", parse", rounds, telegramsPerRound, repeated([&] {
                vek::log::Telegram telegram;
                telegram.parse(text);
                return telegram.params.size();
            }),
            repeated([&] { return splitText(text).params.size(); }), target);
    vek::log::Telegram telegram;
    telegram.parse(text);
    const Pieces pieces = splitText(text);
    std::string serialized;
    telegram.serialize(serialized);
    vek_bench::require(serialized == text && joinText(pieces) == text,
                       name + ": the text changed on its way");
    compare(name + ", serialize", rounds, telegramsPerRound, repeated([&] {
                std::string result;
                telegram.serialize(result);
                return result.size();
            }),
            repeated([&] { return joinText(pieces).size(); }), target);
}

void measureAll() {
    measure("request", "change-default-scope:scope=WARN");
    const std::string separator = "\x1F";
    measure("message", "message:agent=demo" + separator +
                           "msg=started, with a text of some length" + separator + "pid=4242" +
                           separator + "scope=INFO" + separator + "tid=77" + separator +
                           "when=1700000000123");
    std::string list = "agent-list:";
    for (int i = 100; i < 200; ++i) {
        list += (i > 100 ? separator : "") + "logger." + std::to_string(i) + "=default";
    }
    measure("list of 100", list);
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(
        argc, argv,
        "telegram_bench [--smoke] [--json]\n"
        "\n"
        "Parsing and serializing telegrams, compared with a split and a\n"
        "join written by hand.\n",
        measureAll);
}
