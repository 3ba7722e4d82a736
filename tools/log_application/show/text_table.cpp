#include "tools/log_application/show/text_table.h"

#include <algorithm>

#include "tools/log_application/show/ansi_text.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

void TextTable::add(const std::vector<std::string>& cells) {
    std::vector<std::string>& row = rows.emplace_back();
    for (const std::string& cell : cells) {
        row.push_back(escapeControls(utf8Of(cell)));
    }
}

void TextTable::write(std::ostream& stream, const std::string& indent) const {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    for (const auto& row : rows) {
        std::string line = indent;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        stream << line << '\n';
    }
}

}  // namespace log_application
