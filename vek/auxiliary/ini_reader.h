// vek::aux::IniReader: reads a file of "key = value" lines.
//
// A '#' starts a comment wherever it stands. A line that isn't one key and one value, both not
// empty and joined by
// '=', is ignored without a message; so a value can hold neither '#' nor '='. There are no sections
// and no quotes. A later line with the same key, in any case, replaces the earlier one and takes
// its own place in the order.
#pragma once

#include <list>
#include <string>
#include <unordered_map>
#include <utility>

#include "vek/auxiliary/line_parser.h"

namespace vek::aux {

// Not to be used by two threads at once.
class IniReader : private LineParser::LineCallback {
  public:
    using Entries = std::list<std::pair<std::string, std::string>>;

    // Reads all lines of the file `path`. Throws what LineParser::parse throws; the entries read so
    // far stay then.
    void read(const std::string& path);

    // Takes one line, without its line end. Always true.
    bool processLine(const std::string& line) override;

    // Key and value in the order of the lines; each key, whatever its case, once.
    const Entries& entries() const { return entryList; }

  private:
    void removeEntry(const std::string& key);

    Entries entryList;
    // Lower-case key to the key as the last line spelled it.
    std::unordered_map<std::string, std::string> foldedKeys;
};

}  // namespace vek::aux
