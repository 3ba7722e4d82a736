// A key of its own for each test that needs the registry.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/registry.h"

namespace vek::test {

// Made before the test below HKEY_CURRENT_USER\Software, and removed with all that is in it
// afterwards. Its own calls are the system's, so that they prove RegistryKey instead of leaning on
// it.
class RegistryTest : public testing::Test {
  protected:
    static constexpr int readWrite = RegistryKey::READ | RegistryKey::WRITE;

    RegistryTest() {
        remove();
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                  nullptr, &raw, nullptr),
                  ERROR_SUCCESS);
    }

    ~RegistryTest() override {
        RegCloseKey(raw);
        remove();
        HKEY left = nullptr;
        EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &left),
                  ERROR_FILE_NOT_FOUND);
    }

    // The test's key, opened anew.
    RegistryKey open(int flags = readWrite, int view = 0) const {
        return RegistryKey(HKEY_CURRENT_USER, path, flags, view);
    }

    // Stores `data` exactly as it is.
    void store(const std::string& name, DWORD type, const std::string& data) const {
        // The system adds a terminator to a text if it finds one right behind it.
        const std::string guarded = data + "x";
        EXPECT_EQ(RegSetValueExA(raw, name.c_str(), 0, type,
                                 reinterpret_cast<const BYTE*>(guarded.data()),
                                 static_cast<DWORD>(data.size())),
                  ERROR_SUCCESS);
    }

    // The bytes and the type that are stored.
    std::string stored(const std::string& name, DWORD* type = nullptr) const {
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueExA(raw, name.c_str(), nullptr, type, nullptr, &size),
                  ERROR_SUCCESS);
        std::string data(size, '\0');
        EXPECT_EQ(RegQueryValueExA(raw, name.c_str(), nullptr, type,
                                   reinterpret_cast<BYTE*>(data.data()), &size),
                  ERROR_SUCCESS);
        return data;
    }

    void makeSubkey(const std::string& name) const {
        HKEY made = nullptr;
        EXPECT_EQ(
            RegCreateKeyExA(raw, name.c_str(), 0, nullptr, 0, KEY_READ, nullptr, &made, nullptr),
            ERROR_SUCCESS);
        RegCloseKey(made);
    }

    bool hasSubkey(const std::string& name) const {
        HKEY found = nullptr;
        const bool result = RegOpenKeyExA(raw, name.c_str(), 0, KEY_READ, &found) == ERROR_SUCCESS;
        RegCloseKey(found);
        return result;
    }

    const std::string path = "Software\\vek-test-" + std::to_string(GetCurrentProcessId());
    HKEY raw = nullptr;

  private:
    void remove() const {
        RegDeleteTreeA(HKEY_CURRENT_USER, path.c_str());
        RegDeleteKeyA(HKEY_CURRENT_USER, path.c_str());
    }
};

// Expects that `call` throws RegistryOsError with `code`, and `message` behind the system's text.
template <class Call>
void expectRegistryError(DWORD code, const std::string& message, Call call) {
    try {
        call();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const RegistryOsError& error) {
        EXPECT_EQ(error.osError().code(), code);
        EXPECT_EQ(error.what(), OsError(code).what() + (": " + message));
    }
}

}  // namespace vek::test
