// Links to directories, for tests of what must not follow them.
#pragma once

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace vek::test {

// A link to a directory, removed at the end if it is still there.
//
// Wine makes no links itself but shows those of the machine as reparse points, so the machine's own
// programs make and remove it there. And what Wine removes by the path of a link is its target, or
// nothing if that isn't empty: that the link goes can be seen on Windows alone, that the content of
// the target stays on both.
class DirectoryLink : public NoCopy {
  public:
    // Makes `name` in `parent` a link to the directory `target`, a path from there with slashes.
    DirectoryLink(const std::string& parent, const std::string& name, const std::string& target)
        : directory(parent), linkName(name) {
        std::string windowsTarget = target;
        std::replace(windowsTarget.begin(), windowsTarget.end(), '/', '\\');
        CreateSymbolicLinkA(path().c_str(), windowsTarget.c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY);
        if (!isThere()) {
            runOfMachine("ln -s " + target + " " + linkName);
        }
        waitUntilThere(true);
        EXPECT_NE(GetFileAttributesA(path().c_str()) & FILE_ATTRIBUTE_REPARSE_POINT, 0u);
    }

    ~DirectoryLink() {
        if (isThere()) {
            runOfMachine("rm " + linkName);
            waitUntilThere(false);
        }
    }

    std::string path() const { return directory + "\\" + linkName; }

    bool isThere() const { return GetFileAttributesA(path().c_str()) != INVALID_FILE_ATTRIBUTES; }

  private:
    void runOfMachine(const std::string& command) const {
        std::string line = "Z:\\bin\\" + command;
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started = {};
        if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                           directory.c_str(), &startup, &started) != 0) {
            CloseHandle(started.hThread);
            CloseHandle(started.hProcess);
        }
    }

    void waitUntilThere(bool wanted) const {
        constexpr int longestWaitMs = 10000;
        for (int waited = 0; isThere() != wanted; waited += 10) {
            if (waited >= longestWaitMs) {
                ADD_FAILURE() << path() << (wanted ? " isn't made" : " isn't removed");
                return;
            }
            Sleep(10);
        }
    }

    std::string directory;
    std::string linkName;
};

}  // namespace vek::test
