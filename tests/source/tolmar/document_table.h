// The tables of the documents, which tests compare with what the helper does.
#pragma once

#include <string>
#include <vector>

namespace tolmar::test {

// The trimmed cells of one row.
using Row = std::vector<std::string>;

// Returns the rows of the tables in the Markdown document `path` whose header begins with
// `header`. The test fails if there are none.
std::vector<Row> rowsOf(const std::string& path, const std::string& header);

}  // namespace tolmar::test
