#include "vek/auxiliary/ini_reader.h"

#include <vector>

#include "vek/base/text.h"

namespace vek::aux {

void IniReader::read(const std::string& path) {
    LineParser().parse(path, *this);
}

bool IniReader::processLine(const std::string& line) {
    std::vector<std::string> fields;
    split(line.substr(0, line.find('#')), '=', fields, true, false);
    if (fields.size() != 2) {
        return true;
    }
    const std::string& key = fields[0];
    std::string folded = key;
    toLower(folded);
    const auto known = foldedKeys.find(folded);
    if (known != foldedKeys.end()) {
        removeEntry(known->second);
    }
    foldedKeys[folded] = key;
    entryList.emplace_back(key, fields[1]);
    return true;
}

void IniReader::removeEntry(const std::string& key) {
    entryList.remove_if([&key](const Entries::value_type& entry) { return entry.first == key; });
}

}  // namespace vek::aux
