// The text of a telegram, as any peer may send it.
#include <algorithm>

#include "tests/native/fuzz/fuzz.h"
#include "vek/log/telegram.h"

namespace {

using vek::log::Telegram;
using vek::test::require;

// The entries but for the one kind that has no text, "" without a value.
std::vector<vek::log::TelegramParams::Entry> writtenEntries(const Telegram& telegram) {
    std::vector<vek::log::TelegramParams::Entry> entries;
    for (const auto& entry : telegram.params) {
        if (!entry.first.empty() || !entry.second.empty()) {
            entries.push_back(entry);
        }
    }
    return entries;
}

void checkLookUp(const Telegram& telegram) {
    const auto& params = telegram.params;
    require(std::is_sorted(params.begin(), params.end(),
                           [](const auto& a, const auto& b) { return a.first < b.first; }),
            "the parameters are sorted by their keys");
    for (const auto& [key, value] : params) {
        const auto values = telegram.paramValues(key);
        require(telegram.hasParam(key) && telegram.param(key) == values.front(),
                "a key has its first value");
        require(std::find(values.begin(), values.end(), value) != values.end(),
                "a value is among those of its key");
        Telegram without = telegram;
        require(without.eraseParam(key) == values.size() && !without.hasParam(key) &&
                    without.params.size() + values.size() == params.size(),
                "erasing a key takes its entries and no other");
    }
}

void checkText(const std::string& text) {
    Telegram telegram;
    try {
        telegram.parse(text);
    } catch (const Telegram::ParseError&) {
        require(text.find(':') == std::string::npos, "any text with a colon is a telegram");
        require(telegram.type.empty() && telegram.params.empty(), "no telegram is an empty one");
        return;
    }
    std::string written;
    telegram.serialize(written);
    Telegram again;
    again.parse(written);
    require(again.type == telegram.type, "the type is written as it was read");
    require(writtenEntries(again) == writtenEntries(telegram),
            "the parameters are written as they were read");
    if (telegram.params.size() < 50) {
        checkLookUp(telegram);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkText(vek::test::textOf(data, size));
    return 0;
}
