#include "vek/base/system_queries.h"

#include <gtest/gtest.h>

#include "vek/base/windows.h"

namespace {

TEST(IsWindowsAtLeast, AgreesWithTheVersionThatTheSystemTells) {
    OSVERSIONINFOEXA told = {};
    told.dwOSVersionInfoSize = sizeof told;
    ASSERT_NE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&told)), 0);
    const int major = static_cast<int>(told.dwMajorVersion);
    const int minor = static_cast<int>(told.dwMinorVersion);
    const int servicePack = told.wServicePackMajor;
    EXPECT_TRUE(vek::isWindowsAtLeast(major, minor, servicePack));
    EXPECT_TRUE(vek::isWindowsAtLeast(major - 1, minor + 5, servicePack + 5));
    EXPECT_FALSE(vek::isWindowsAtLeast(major, minor, servicePack + 1));
    EXPECT_FALSE(vek::isWindowsAtLeast(major, minor + 1, 0));
    EXPECT_FALSE(vek::isWindowsAtLeast(major + 1, 0, 0));
}

TEST(IsWindowsAtLeast, FixedFormsAskForTheirVersions) {
    EXPECT_EQ(vek::isWindows6OrLater(), vek::isWindowsAtLeast(6, 0, 0));
    EXPECT_EQ(vek::isWindows10OrLater(), vek::isWindowsAtLeast(10, 0, 0));
    EXPECT_TRUE(vek::isWindows6OrLater());
}

TEST(MachineType, IsTheElfNumberOfTheNativeArchitecture) {
    SYSTEM_INFO info = {};
    GetNativeSystemInfo(&info);
    switch (info.wProcessorArchitecture) {
        case 0:
            EXPECT_EQ(vek::machineType(), 3);
            break;
        case 5:
            EXPECT_EQ(vek::machineType(), 40);
            break;
        case 6:
            EXPECT_EQ(vek::machineType(), 50);
            break;
        case 9:
            EXPECT_EQ(vek::machineType(), 62);
            break;
        default:
            EXPECT_EQ(vek::machineType(), 0);
    }
}

}  // namespace
