// Host names around the length that is asked for, on a computer that is renamed for it: so this
// needs a machine or a Wine prefix of its own.
#include "vek/base/host_name.h"

#include <array>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/pathinfo.h"

namespace {

class RenamedComputer : public testing::Test {
  protected:
    RenamedComputer() {
        EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE,
                                "System\\CurrentControlSet\\Services\\Tcpip\\Parameters", 0,
                                KEY_READ | KEY_WRITE, &key),
                  ERROR_SUCCESS);
        DWORD size = before.size();
        EXPECT_EQ(RegQueryValueExA(key, "Hostname", nullptr, nullptr,
                                   reinterpret_cast<BYTE*>(before.data()), &size),
                  ERROR_SUCCESS);
    }
    ~RenamedComputer() override {
        rename(before.data());
        RegCloseKey(key);
    }

    void rename(const std::string& name) {
        EXPECT_EQ(
            RegSetValueExA(key, "Hostname", 0, REG_SZ, reinterpret_cast<const BYTE*>(name.c_str()),
                           static_cast<DWORD>(name.size() + 1)),
            ERROR_SUCCESS);
    }

    HKEY key = nullptr;
    std::array<char, 256> before = {};
};

TEST_F(RenamedComputer, NameOf15CharactersIsTold) {
    rename("fifteen-letters");
    EXPECT_EQ(vek::hostName(0), "fifteen-letters");
    EXPECT_EQ(vek::PathInfo().get("HOSTNAME", ""), "fifteen-letters");
}

TEST_F(RenamedComputer, NameOf16CharactersIsRefusedAndTheTableSaysHostname) {
    rename("sixteen--letters");
    try {
        vek::hostName(0);
        ADD_FAILURE() << "nothing thrown";
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(ERROR_MORE_DATA));
    }
    const vek::PathInfo table;
    EXPECT_EQ(table.get("HOSTNAME", ""), "hostname");
    EXPECT_EQ(table.get("COMPUTERNAME", ""), "hostname");
}

}  // namespace
