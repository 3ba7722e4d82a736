#include "vek/log/telegram.h"

#include <algorithm>
#include <array>
#include <charconv>

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
        params.add(key, value);
    }
}

void Telegram::serialize(std::string& text) const {
    text.resize(textSize());
    writeText(text.data());
}

std::size_t Telegram::textSize() const {
    std::size_t size = type.size() + sizeof typeSeparator;
    for (const auto& [key, value] : params) {
        size += key.size() + sizeof paramSeparator;
        if (!value.empty()) {
            size += sizeof keySeparator + value.size();
        }
    }
    // The first has no separator before it.
    return params.empty() ? size : size - sizeof paramSeparator;
}

void Telegram::writeText(char* target) const {
    const auto append = [&target](const std::string& bytes) {
        target = std::copy_n(bytes.data(), bytes.size(), target);
    };
    append(type);
    char separator = typeSeparator;
    if (params.empty()) {
        *target = separator;
    }
    for (const auto& [key, value] : params) {
        *target++ = separator;
        separator = paramSeparator;
        append(key);
        if (!value.empty()) {
            *target++ = keySeparator;
            append(value);
        }
    }
}

void Telegram::addParam(std::string_view key, std::string_view value) {
    params.add(key, value);
}

void Telegram::addParam(std::string_view key, std::int64_t number) {
    std::array<char, 20> digits;  // enough for the lowest number with its sign
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    addParam(key, std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
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
