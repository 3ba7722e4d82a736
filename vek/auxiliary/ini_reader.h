// vek::aux::IniReader: reads a file of "key = value" lines.
//
// A '#' starts a comment wherever it is. A line that isn't one key and one value, both not empty
// and joined by '=', is ignored without a message; so a value can contain neither '#' nor '='.
// There are no sections and no quotes. A later line with the same key, in any case, replaces the
// earlier one and takes its own place in the order.
#pragma once

#include <list>
#include <string>
#include <unordered_map>
#include <utility>

#include "vek/auxiliary/line_parser.h"

namespace vek::aux {

// Not thread-safe.
class IniReader : private LineParser::LineCallback {
  public:
    using Entries = std::list<std::pair<std::string, std::string>>;  // keys and values

    // Reads all lines of the file `path`. Throws as LineParser::parse does; the entries read so far
    // are kept then.
    void read(const std::string& path);

    // Takes one line, without its line end, in constant time. Always returns true.
    bool processLine(const std::string& line) override;

    // Key and value in the order of the lines; each key, whatever its case, once.
    const Entries& entries() const { return entryList; }

  private:
    Entries entryList;
    // Lower-case key to the entry of its last line.
    std::unordered_map<std::string, Entries::iterator> foldedKeys;
};

}  // namespace vek::aux
