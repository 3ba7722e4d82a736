// What the tests of the flat system functions share.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "tests/support/open_handles.h"
#include "vek/base/windows.h"

namespace vek::test {

// A name for a system object that no other test run uses.
inline std::string uniqueName(const std::string& name) {
    return "vek-test-" + std::to_string(GetCurrentProcessId()) + "-" + name;
}

class OwnedHandle {
  public:
    OwnedHandle() = default;
    explicit OwnedHandle(HANDLE owned) : handle(owned) {}
    ~OwnedHandle() {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    HANDLE get() const { return handle; }
    // For functions that store a handle.
    HANDLE* out() { return &handle; }
    HANDLE release() {
        const HANDLE released = handle;
        handle = nullptr;
        return released;
    }

  private:
    HANDLE handle = nullptr;
};

// The command line that runs the support program os_child.exe, which is beside the test.
inline std::string childCommand(const std::string& arguments) {
    std::array<char, MAX_PATH> path = {};
    GetModuleFileNameA(nullptr, path.data(), path.size());
    const std::string program = path.data();
    return "\"" + program.substr(0, program.rfind('\\')) + "\\os_child.exe\" " + arguments;
}

inline int handlesOfThisProcess() {
    return static_cast<int>(support::openHandles().size());
}

}  // namespace vek::test
