// What a configuration file would cost its parser.
#include <algorithm>

#include "tests/native/fuzz/fuzz.h"
#include "vek/log/config/file_cost.h"

using vek::test::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = vek::test::textOf(data, size);
    const vek::log::ConfigCost cost = vek::log::costOfConfig(text);
    const auto count = [&text](char byte) {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
    };
    require(cost.settings <= count('=') + count(':'), "a setting has its sign");
    require(cost.elements <= count(','), "an element has its comma");
    require(cost.longestPiece <= text.size(), "no piece is longer than the text");
    if (text.find_first_of("\"#/\\") == std::string::npos) {
        require(cost.settings == count('=') + count(':') && cost.elements == count(','),
                "without texts and comments each sign counts");
    }
    return 0;
}
