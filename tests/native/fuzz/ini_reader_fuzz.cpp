// The lines of an ini file.
#include <set>
#include <sstream>

#include "tests/native/fuzz/fuzz.h"
#include "vek/auxiliary/ini_reader.h"
#include "vek/base/text.h"

using vek::aux::IniReader;
using vek::test::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    IniReader reader;
    std::istringstream lines(vek::test::textOf(data, size));
    for (std::string line; std::getline(lines, line);) {
        require(reader.processLine(line), "no line ends the file");
    }
    IniReader again;
    std::set<std::string> keys;
    for (const auto& [key, value] : reader.entries()) {
        require(!key.empty() && !value.empty(), "keys and values aren't empty");
        require(vek::trimmed(key) == key && vek::trimmed(value) == value, "they are trimmed");
        require((key + value).find_first_of("#=\n") == std::string::npos, "they hold no separator");
        std::string folded = key;
        require(keys.insert(vek::toLower(folded)).second, "each key is there once, in any case");
        again.processLine(" " + key + "\t= " + value + " # comment = more");
    }
    require(again.entries() == reader.entries(), "entries are read as they were written");
    return 0;
}
