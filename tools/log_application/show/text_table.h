// log_application::TextTable: writes rows of text in aligned columns.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace log_application {

class TextTable {
  public:
    // Adds a row. Cells are converted to UTF-8 as by `utf8Of`, and control characters escaped.
    void add(const std::vector<std::string>& cells);

    // Writes each row behind `indent`, with two blanks between columns and none at the end. A
    // column is as wide as its widest cell.
    void write(std::ostream& stream, const std::string& indent = "") const;

  private:
    std::vector<std::vector<std::string>> rows;
};

}  // namespace log_application
