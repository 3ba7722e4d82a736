// Files whose names the ANSI code page can't represent.
#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace vek::test {

// Creates an empty file; false if the file system can't hold the name.
inline bool makeWideFile(const std::wstring& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(file);
    return true;
}

// Runs the current test again in a process with a locale of UTF-8, without which Wine's file system
// can't hold such names, and expects it to pass there. Only a program of the machine can change the
// locale that Wine starts with. `directory` is the test's own.
inline void runAgainWithWideNames(const std::string& directory) {
    ASSERT_EQ(std::getenv("VEK_TEST_WIDE_NAMES"), nullptr) << "names are not wide here either";
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::array<char, MAX_PATH> program = {};
    GetModuleFileNameA(nullptr, program.data(), program.size());
    std::string machinePath = program.data() + 2;  // behind "Z:"
    std::replace(machinePath.begin(), machinePath.end(), '\\', '/');
    std::string command =
        "Z:\\usr\\bin\\env LC_ALL=C.UTF-8 VEK_TEST_WIDE_NAMES=1 wine " + machinePath +
        " --gtest_output=xml:result.xml --gtest_filter=" + test->test_suite_name() + "." +
        test->name();
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    ASSERT_NE(CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                             directory.c_str(), &startup, &started),
              0);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    constexpr int longestWaitMs = 60000;
    std::string result;
    for (int waited = 0; waited < longestWaitMs && !result.ends_with("</testsuites>\n");
         waited += 20) {
        Sleep(20);
        std::ostringstream content;
        content << std::ifstream(directory + "\\result.xml").rdbuf();
        result = content.str();
    }
    EXPECT_NE(result.find("tests=\"1\" failures=\"0\""), std::string::npos) << "with wide names:\n"
                                                                            << result;
}

}  // namespace vek::test
