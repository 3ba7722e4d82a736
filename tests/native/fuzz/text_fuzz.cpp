// The operations on texts, and variables in them.
#include <map>

#include "tests/native/fuzz/fuzz.h"
#include "vek/base/text.h"

namespace {

using vek::test::require;

std::string joined(const std::vector<std::string>& fields, const std::string& glue) {
    std::string text;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        text += (i == 0 ? "" : glue) + fields[i];
    }
    return text;
}

void checkSplit(const std::string& text, char delimiter) {
    std::vector<std::string> fields;
    vek::split(text, delimiter, fields, false, true);
    require(joined(fields, std::string(1, delimiter)) == text, "fields make up the text");
    std::vector<std::string> kept;
    for (const std::string& field : fields) {
        if (!vek::trimmed(field).empty()) {
            kept.push_back(vek::trimmed(field));
        }
    }
    vek::split(text, delimiter, fields, true, false);
    require(fields == kept, "without empty fields the others stay, trimmed");
}

// Replaces one after the other, from the front.
std::string replaced(std::string text, const std::string& find, const std::string& by) {
    for (std::size_t at = 0; (at = text.find(find, at)) != std::string::npos; at += by.size()) {
        text.replace(at, find.size(), by);
    }
    return text;
}

void checkReplace(const std::string& text, const std::string& find, const std::string& by) {
    std::string changed = text;
    const std::size_t count = vek::replaceAll(changed, find, by);
    if (find.empty()) {
        require(count == 0 && changed == text, "nothing is found nowhere");
        return;
    }
    require(changed == replaced(text, find, by), "each is replaced once");
    require(changed.size() + count * find.size() == text.size() + count * by.size(),
            "the count is that of the replacements");
    std::string marked = text;
    vek::replaceAnyOf(marked, find, by);
    std::string single;
    for (const char character : text) {
        single += find.find(character) != std::string::npos ? by : std::string(1, character);
    }
    require(marked == single, "each of the set is replaced");
}

void checkVariables(std::string text, const std::map<std::string, std::string>& values) {
    std::string expected = text;
    for (const auto& [key, value] : values) {
        expected = replaced(expected, "{" + key + "}", value);
    }
    vek::expandVariables(text, values);
    require(text == expected, "each variable is replaced, in the order of their names");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const char delimiter = input.ConsumeIntegral<char>();
    const std::string find = input.ConsumeRandomLengthString(4);
    const std::string by = input.ConsumeRandomLengthString(8);
    // Few and short: a value may hold the variables behind its own.
    std::map<std::string, std::string> values;
    for (int i = input.ConsumeIntegralInRange(0, 3); i > 0; --i) {
        std::string key = input.ConsumeRandomLengthString(3);
        values[std::move(key)] = input.ConsumeRandomLengthString(10);
    }
    const std::string text = input.ConsumeRemainingBytesAsString();
    checkSplit(text, delimiter);
    checkReplace(text, find, by);
    checkVariables(text, values);
    std::string lower = text;
    std::string upper = text;
    vek::toUpper(vek::toLower(lower));
    require(lower == vek::toUpper(upper), "the case that was is forgotten");
    return 0;
}
