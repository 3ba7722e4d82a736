#include "vek/log/telegram_params.h"

#include <algorithm>

namespace vek::log {

namespace {

struct ByKey {
    bool operator()(const TelegramParams::Entry& entry, std::string_view key) const {
        return entry.first < key;
    }
    bool operator()(std::string_view key, const TelegramParams::Entry& entry) const {
        return key < entry.first;
    }
};

}  // namespace

void TelegramParams::add(std::string key, std::string value) {
    if (entries.empty() || entries.back().first <= key) {
        entries.emplace_back(std::move(key), std::move(value));
        return;
    }
    const auto place = std::upper_bound(entries.begin(), entries.end(), key, ByKey());
    entries.emplace(place, std::move(key), std::move(value));
}

std::pair<TelegramParams::Iterator, TelegramParams::Iterator> TelegramParams::equalRange(
    std::string_view key) const {
    return std::equal_range(entries.begin(), entries.end(), key, ByKey());
}

std::size_t TelegramParams::erase(std::string_view key) {
    const auto [first, last] = equalRange(key);
    const auto count = static_cast<std::size_t>(last - first);
    entries.erase(first, last);
    return count;
}

}  // namespace vek::log
