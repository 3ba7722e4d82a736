#include "vek/log/telegram.h"

#include <algorithm>
#include <utility>

namespace vek::log {

namespace {

constexpr char typeSeparator = ':';
constexpr char paramSeparator = '\x1F';
constexpr char keySeparator = '=';

}  // namespace

const std::string endOfReply = "end-of-reply";
const std::string unsupported = "unsupported";
const std::string Telegram::noParam;

void Telegram::parse(std::string_view text) {
    params.clear();
    type.clear();
    const std::size_t colon = text.find(typeSeparator);
    if (colon == std::string_view::npos) {
        throw ParseError("Missing separator ':' in \"" + std::string(text) + "\"");
    }
    type = text.substr(0, colon);
    const auto separators = std::count(text.begin(), text.end(), paramSeparator);
    params.reserve(static_cast<std::size_t>(separators) + 1);
    for (std::size_t start = colon + 1; start < text.size();) {
        const std::size_t end = std::min(text.find(paramSeparator, start), text.size());
        const std::string_view piece = text.substr(start, end - start);
        start = end + 1;
        if (piece.empty()) {
            continue;
        }
        const std::size_t equals = piece.find(keySeparator);
        const std::string_view key = piece.substr(0, equals);
        const std::string_view value =
            equals == std::string_view::npos ? std::string_view() : piece.substr(equals + 1);
        params.add(std::string(key), std::string(value));
    }
}

void Telegram::serialize(std::string& text) const {
    text = type;
    text += typeSeparator;
    bool first = true;
    for (const auto& [key, value] : params) {
        if (!first) {
            text += paramSeparator;
        }
        first = false;
        text += key;
        if (!value.empty()) {
            text += keySeparator;
            text += value;
        }
    }
}

void Telegram::addParam(std::string key, std::string value) {
    params.add(std::move(key), std::move(value));
}

void Telegram::addParam(std::string key, std::int64_t number) {
    addParam(std::move(key), std::to_string(number));
}

bool Telegram::hasParam(std::string_view key) const {
    const auto [first, last] = params.equalRange(key);
    return first != last;
}

const std::string& Telegram::param(std::string_view key) const {
    const auto [first, last] = params.equalRange(key);
    return first != last ? first->second : noParam;
}

std::vector<std::string> Telegram::paramValues(std::string_view key) const {
    std::vector<std::string> values;
    const auto [first, last] = params.equalRange(key);
    for (auto entry = first; entry != last; ++entry) {
        values.push_back(entry->second);
    }
    return values;
}

std::size_t Telegram::eraseParam(std::string_view key) {
    return params.erase(key);
}

}  // namespace vek::log
