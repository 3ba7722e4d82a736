#include "vek/base/text.h"

#include <algorithm>
#include <cctype>

namespace vek {

namespace {

bool isTrimmed(char candidate, char ch) {
    return ch == 0 ? std::isspace(static_cast<unsigned char>(candidate)) != 0 : candidate == ch;
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

}  // namespace vek
