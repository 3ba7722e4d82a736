// The samples of a page of documentation, to be compared with the source that is compiled and run.
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace support {

using Lines = std::vector<std::string>;

// The lines of a file, without the blanks at their ends.
inline Lines linesOf(const char* path) {
    std::ifstream file(path);
    EXPECT_TRUE(file.good()) << path;
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        const std::size_t first = line.find_first_not_of(" \r");
        const std::size_t last = line.find_last_not_of(" \r");
        lines.push_back(first == std::string::npos ? "" : line.substr(first, last - first + 1));
    }
    return lines;
}

// One text, without the empty lines.
inline std::string joined(const Lines& lines) {
    std::string text = "\n";
    for (const std::string& line : lines) {
        text += line.empty() ? "" : line + "\n";
    }
    return text;
}

// The blocks of C++ code in the page `documentation`.
inline std::vector<Lines> samplesOf(const char* documentation) {
    std::vector<Lines> found;
    bool inside = false;
    for (const std::string& line : linesOf(documentation)) {
        if (!inside && line == "```cpp") {
            inside = true;
            found.emplace_back();
        } else if (inside && line == "```") {
            inside = false;
        } else if (inside) {
            found.back().push_back(line);
        }
    }
    EXPECT_FALSE(inside);
    return found;
}

// Each of the `count` samples of the page is in the file `source`, but for indentation and empty
// lines.
inline void expectSamplesIn(const char* documentation, const char* source, std::size_t count) {
    const std::string compiled = joined(linesOf(source));
    const std::vector<Lines> documented = samplesOf(documentation);
    EXPECT_EQ(documented.size(), count);
    for (const Lines& sample : documented) {
        EXPECT_NE(compiled.find(joined(sample)), std::string::npos)
            << "not in " << source << ":" << joined(sample);
    }
}

}  // namespace support
