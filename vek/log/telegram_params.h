// vek::log::TelegramParams: the parameters of a telegram, an ordered multi-map of texts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vek::log {

// Sorted by key, byte by byte, where a shorter key stands in front of a longer one that begins with
// it; entries of the same key stay in the order in which they were added. Walked with a range-based
// for. For one thread at a time.
//
// One array instead of a tree: nearly all keys come in their order, and an entry then costs no
// allocation of its own.
class TelegramParams {
  public:
    using Entry = std::pair<std::string, std::string>;
    using Iterator = std::vector<Entry>::const_iterator;

    Iterator begin() const { return entries.begin(); }
    Iterator end() const { return entries.end(); }
    std::size_t size() const { return entries.size(); }
    bool empty() const { return entries.empty(); }

    void clear() { entries.clear(); }

    // Makes room for `count` entries in all.
    void reserve(std::size_t count) { entries.reserve(count); }

    // Equal keys don't replace one another.
    void add(std::string key, std::string value);

    // The entries of `key`: the first, and behind the last.
    std::pair<Iterator, Iterator> equalRange(std::string_view key) const;

    // Removes all entries of `key`. The result is their number.
    std::size_t erase(std::string_view key);

    bool operator==(const TelegramParams&) const = default;

  private:
    std::vector<Entry> entries;
};

}  // namespace vek::log
