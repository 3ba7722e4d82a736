#include "vek/base/host_name.h"

#include <array>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

// What the system says with room for any name.
std::string systemsName(COMPUTER_NAME_FORMAT format) {
    std::array<char, 1024> buffer = {};
    DWORD size = buffer.size();
    return GetComputerNameExA(format, buffer.data(), &size) != 0 ? buffer.data() : "<failed>";
}

// A name longer than 15 characters throws; which of the two holds depends on the machine.
void expectName(int type, COMPUTER_NAME_FORMAT format) {
    const std::string expected = systemsName(format);
    if (expected.size() <= 15) {
        EXPECT_EQ(vek::hostName(type), expected);
    } else {
        try {
            vek::hostName(type);
            ADD_FAILURE() << "no exception for " << expected;
        } catch (const vek::OsError& error) {
            EXPECT_EQ(error.code(), static_cast<std::uint32_t>(ERROR_MORE_DATA));
        }
    }
}

TEST(HostName, TypesAreTheThreeNamesOfTheSystem) {
    expectName(0, ComputerNameDnsHostname);
    expectName(1, ComputerNameDnsFullyQualified);
    expectName(2, ComputerNameNetBIOS);
}

TEST(HostName, OtherTypesAreRefused) {
    for (const int type : {-1, 3, 1000}) {
        try {
            vek::hostName(type);
            ADD_FAILURE() << type;
        } catch (const vek::UsageError& error) {
            EXPECT_EQ(error.what(),
                      "Usage error: windowsFormatFromType: Invalid type: " + std::to_string(type));
        }
    }
}

}  // namespace
