#include "vek/log/service/telegram_params.h"

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

void TelegramParams::add(std::string_view key, std::string_view value) {
    const auto place = empty() || entries[count - 1].first <= key
                           ? end()
                           : std::upper_bound(begin(), end(), key, ByKey());
    const auto offset = place - begin();
    if (count == entries.size()) {
        entries.emplace_back(key, value);
    } else {
        entries[count].first = key;
        entries[count].second = value;
    }
    const auto added = entries.begin() + static_cast<std::ptrdiff_t>(count++);
    std::rotate(entries.begin() + offset, added, added + 1);
}

std::pair<TelegramParams::Iterator, TelegramParams::Iterator> TelegramParams::equalRange(
    std::string_view key) const {
    return std::equal_range(begin(), end(), key, ByKey());
}

std::size_t TelegramParams::erase(std::string_view key) {
    const auto [first, last] = equalRange(key);
    const auto erased = last - first;
    const auto target = entries.begin() + (first - begin());
    std::rotate(target, target + erased, entries.begin() + static_cast<std::ptrdiff_t>(count));
    count -= static_cast<std::size_t>(erased);
    return static_cast<std::size_t>(erased);
}

bool TelegramParams::operator==(const TelegramParams& other) const {
    return std::equal(begin(), end(), other.begin(), other.end());
}

}  // namespace vek::log
