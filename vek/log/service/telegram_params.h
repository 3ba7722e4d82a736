// vek::log::TelegramParams: the parameters of a telegram, a sorted multi-map of strings.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vek::log {

// Sorted by key, byte by byte; a key that is the beginning of another comes first. Entries of the
// same key keep the order in which they were added. Not thread-safe. Every change invalidates
// iterators and references: an entry moves at the next addition.
//
// One array instead of a tree: keys are nearly always added in order, and an entry needs no
// allocation of its own then. The memory of removed entries is reused.
class TelegramParams {
  public:
    using Entry = std::pair<std::string, std::string>;    // key and value
    using Iterator = std::vector<Entry>::const_iterator;  // over the entries, sorted

    Iterator begin() const { return entries.begin(); }  // the first entry
    // Behind the last entry.
    Iterator end() const { return entries.begin() + static_cast<std::ptrdiff_t>(count); }
    std::size_t size() const { return count; }  // the number of entries
    bool empty() const { return count == 0; }   // whether there is no entry

    void clear() { count = 0; }  // removes all entries

    // Reserves memory for `newCount` entries in all.
    void reserve(std::size_t newCount) { entries.reserve(newCount); }

    // Adds an entry, also if there is one of the same key. The arguments may refer to an entry.
    void add(std::string_view key, std::string_view value);

    // The range of the entries of `key`.
    std::pair<Iterator, Iterator> equalRange(std::string_view key) const;

    // Removes all entries of `key` and returns their number.
    std::size_t erase(std::string_view key);

    bool operator==(const TelegramParams& other) const;

  private:
    // The first `count` are valid; the others are spare.
    std::vector<Entry> entries;
    std::size_t count = 0;
};

}  // namespace vek::log
