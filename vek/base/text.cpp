#include "vek/base/text.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

namespace vek {

namespace {

bool isTrimmed(char candidate, char ch) {
    return ch == 0 ? std::isspace(static_cast<unsigned char>(candidate)) != 0 : candidate == ch;
}

// Replaces each of the `length` characters that `findFrom(position)` finds in `text`. The result is
// put together beside the text, as replacing in place would move the rest of it each time.
template <class FindFrom>
std::size_t replaceEach(std::string& text, std::size_t length, const std::string& replacement,
                        FindFrom findFrom) {
    std::size_t found = findFrom(0);
    if (found == std::string::npos) {
        return 0;
    }
    std::size_t count = 0;
    std::size_t position = 0;
    std::string result;
    for (; found != std::string::npos; found = findFrom(position)) {
        result.append(text, position, found - position);
        result += replacement;
        position = found + length;
        ++count;
    }
    result.append(text, position, std::string::npos);
    text = std::move(result);
    return count;
}

// Whether a key of `values` begins with `prefix`.
bool hasKeyWith(const std::map<std::string, std::string>& values, const std::string& prefix) {
    const auto first = values.lower_bound(prefix);
    return first != values.end() && first->first.starts_with(prefix);
}

// Expands a text in one pass if that has the same result as one key after the other. If braces
// nest, or a key or an inserted value contains one, the order of the keys matters: then nothing is
// changed, and there is no result.
std::optional<std::size_t> expandAtOnce(std::string& text,
                                        const std::map<std::string, std::string>& values) {
    constexpr char braces[] = "{}";
    std::size_t count = 0;
    std::size_t copied = 0;
    std::string result;
    std::string key;
    for (std::size_t open = text.find('{'); open != std::string::npos;) {
        const std::size_t close = text.find_first_of(braces, open + 1);
        if (close == std::string::npos) {
            break;
        }
        // A key that continues with the brace would match text behind it, too.
        key.assign(text, open + 1, close - open);
        if (text[close] == '{' || hasKeyWith(values, key)) {
            return std::nullopt;
        }
        key.pop_back();
        const auto found = values.find(key);
        if (found != values.end()) {
            if (found->second.find_first_of(braces) != std::string::npos) {
                return std::nullopt;
            }
            result.append(text, copied, open - copied);
            result += found->second;
            copied = close + 1;
            ++count;
        }
        open = text.find('{', close + 1);
    }
    if (count != 0) {
        result.append(text, copied, std::string::npos);
        text = std::move(result);
    }
    return count;
}

}  // namespace

std::string& trim(std::string& text, char ch) {
    std::size_t first = 0;
    while (first < text.size() && isTrimmed(text[first], ch)) {
        ++first;
    }
    std::size_t last = text.size();
    while (last > first && isTrimmed(text[last - 1], ch)) {
        --last;
    }
    text.erase(last);
    text.erase(0, first);
    return text;
}

std::string trimmed(const std::string& text, char ch) {
    std::string copy = text;
    trim(copy, ch);
    return copy;
}

std::string& toLower(std::string& text) {
    for (char& ch : text) {
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    }
    return text;
}

std::string& toUpper(std::string& text) {
    for (char& ch : text) {
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    }
    return text;
}

void split(const std::string& text, char delimiter, std::vector<std::string>& out, bool trimFields,
           bool keepEmpty) {
    out.clear();
    std::size_t position = 0;
    for (;;) {
        if (!keepEmpty) {
            position = std::min(text.find_first_not_of(delimiter, position), text.size());
        }
        const std::size_t next = text.find(delimiter, position);
        std::string field = text.substr(position, next - position);
        if (trimFields) {
            trim(field);
        }
        if (!field.empty() || keepEmpty) {
            out.push_back(std::move(field));
        }
        if (next == std::string::npos) {
            return;
        }
        position = next + 1;
    }
}

std::string& replaceChar(std::string& text, char from, char to) {
    std::replace(text.begin(), text.end(), from, to);
    return text;
}

std::size_t replaceAll(std::string& text, const std::string& find, const std::string& replacement) {
    if (find.empty()) {
        return 0;
    }
    return replaceEach(text, find.size(), replacement,
                       [&](std::size_t position) { return text.find(find, position); });
}

std::size_t replaceAnyOf(std::string& text, const std::string& set,
                         const std::string& replacement) {
    return replaceEach(text, 1, replacement,
                       [&](std::size_t position) { return text.find_first_of(set, position); });
}

std::size_t expandVariables(std::string& text, const std::map<std::string, std::string>& values) {
    if (text.find('{') == std::string::npos) {
        return 0;
    }
    if (const std::optional<std::size_t> expanded = expandAtOnce(text, values)) {
        return *expanded;
    }
    std::size_t count = 0;
    for (const auto& [key, value] : values) {
        count += replaceAll(text, "{" + key + "}", value);
    }
    return count;
}

}  // namespace vek
