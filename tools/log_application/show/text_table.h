// log_application::TextTable: columns of text, each as wide as its widest cell.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace log_application {

class TextTable {
  public:
    // Adds a row. Control characters of the cells are escaped.
    void add(const std::vector<std::string>& cells);

    // Writes the rows, each behind `indent`, with two blanks between columns and none at the end.
    void write(std::ostream& stream, const std::string& indent = "") const;

  private:
    std::vector<std::vector<std::string>> rows;
};

}  // namespace log_application
