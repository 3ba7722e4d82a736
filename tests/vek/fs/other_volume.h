// A directory on another volume than the temporary files.
#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/vek/temporary_directory.h"
#include "vek/base/windows.h"

namespace vek::test {

// Besides its directory for temporary files, each test gets one in the memory file system of the
// machine, which Wine shows below its drive Z. Files can't be renamed from one to the other.
class TwoVolumesTest : public TemporaryDirectoryTest {
  protected:
    TwoVolumesTest() {
        // Other tests make theirs at the same time, also those of other checkouts.
        DWORD number = GetTickCount();
        do {
            otherRoot = "Z:\\dev\\shm\\vek" + std::to_string(number++);
        } while (CreateDirectoryA(otherRoot.c_str(), nullptr) == 0 &&
                 GetLastError() == ERROR_ALREADY_EXISTS);
        if (!std::filesystem::is_directory(otherRoot)) {
            ADD_FAILURE() << "no second volume: error " << GetLastError();
        }
    }

    ~TwoVolumesTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(otherRoot, ignored);
    }

    // The full path of `name` on the other volume.
    std::string otherPath(const std::string& name) const { return otherRoot + "\\" + name; }

    // Readable to the first byte, which fails: the memory of a process, where nothing is at 0.
    static constexpr char unreadableFile[] = "Z:\\proc\\self\\mem";

    // Can be opened for writing and is always full. It is a device of the machine: nothing that
    // could remove it may get its path.
    static constexpr char fullFile[] = "Z:\\dev\\full";

  private:
    std::string otherRoot;
};

}  // namespace vek::test
