// A directory of its own for each test that needs files.
#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace vek::test {

// Made ahead of the test in the system's place for temporary files, and removed with all that is in
// it afterwards.
class TemporaryDirectoryTest : public testing::Test {
  protected:
    TemporaryDirectoryTest() {
        char base[MAX_PATH] = {};
        GetTempPathA(sizeof base, base);
        // Tests run side by side, so the name is that of this process, and a directory that a
        // process of the same id has left is passed over.
        for (int i = 0; root.empty() && i < 1000; ++i) {
            const std::string name = std::string(base) + "vek-test-" +
                                     std::to_string(GetCurrentProcessId()) + "-" +
                                     std::to_string(i);
            if (CreateDirectoryA(name.c_str(), nullptr) != 0) {
                root = name;
            }
        }
        EXPECT_NE(root, "") << "no temporary directory: error " << GetLastError();
    }

    ~TemporaryDirectoryTest() override {
        if (!root.empty()) {
            std::error_code ignored;
            std::filesystem::remove_all(root, ignored);
        }
    }

    // The full path of `name` in the directory, or of the directory itself.
    std::string path(const std::string& name = "") const {
        return name.empty() ? root : root + "\\" + name;
    }

    // Both byte for byte.
    void writeFile(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }
    std::string readFile(const std::string& name) const {
        std::ostringstream content;
        content << std::ifstream(path(name), std::ios::binary).rdbuf();
        return content.str();
    }

  private:
    std::string root;
};

}  // namespace vek::test
