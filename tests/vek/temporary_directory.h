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
        char name[MAX_PATH] = {};
        GetTempPathA(sizeof base, base);
        if (GetTempFileNameA(base, "vek", 0, name) == 0 || DeleteFileA(name) == 0 ||
            CreateDirectoryA(name, nullptr) == 0) {
            ADD_FAILURE() << "no temporary directory: error " << GetLastError();
        }
        root = name;
    }

    ~TemporaryDirectoryTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
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
