#include "tests/source/tolmar/document_table.h"

#include <fstream>

#include <gtest/gtest.h>

#include "vek/base/text.h"

namespace tolmar::test {

std::vector<Row> rowsOf(const std::string& path, const std::string& header) {
    std::ifstream document(path);
    EXPECT_TRUE(document.good()) << path;
    std::vector<Row> rows;
    bool inTable = false;
    for (std::string line; std::getline(document, line);) {
        vek::trim(line);
        if (!line.starts_with("|")) {
            inTable = false;
        } else if (line.starts_with(header)) {
            inTable = true;
        } else if (inTable && !line.starts_with("|---")) {
            rows.emplace_back();
            vek::split(line, '|', rows.back(), true, false);
        }
    }
    EXPECT_FALSE(rows.empty()) << header << " in " << path;
    return rows;
}

}  // namespace tolmar::test
