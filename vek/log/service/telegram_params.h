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
// allocation of its own. Entries that were removed keep their memory for those that come next.
class TelegramParams {
  public:
    using Entry = std::pair<std::string, std::string>;
    using Iterator = std::vector<Entry>::const_iterator;

    Iterator begin() const { return entries.begin(); }
    Iterator end() const { return entries.begin() + static_cast<std::ptrdiff_t>(count); }
    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }

    void clear() { count = 0; }

    // Makes room for `newCount` entries in all.
    void reserve(std::size_t newCount) { entries.reserve(newCount); }

    // Equal keys don't replace one another. Both texts may stand in an entry.
    void add(std::string_view key, std::string_view value);

    // The entries of `key`: the first, and behind the last.
    std::pair<Iterator, Iterator> equalRange(std::string_view key) const;

    // Removes all entries of `key`. The result is their number.
    std::size_t erase(std::string_view key);

    bool operator==(const TelegramParams& other) const;

  private:
    // The first `count` are there; the others are spare.
    std::vector<Entry> entries;
    std::size_t count = 0;
};

}  // namespace vek::log
