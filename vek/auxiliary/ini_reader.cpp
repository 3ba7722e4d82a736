#include "vek/auxiliary/ini_reader.h"

#include <utility>
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
    const auto entry = entryList.emplace(entryList.end(), key, fields[1]);
    const auto [known, isNew] = foldedKeys.try_emplace(std::move(folded), entry);
    if (!isNew) {
        entryList.erase(known->second);
        known->second = entry;
    }
    return true;
}

}  // namespace vek::aux
