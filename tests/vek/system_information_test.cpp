#include <string>

#include <gtest/gtest.h>

#include "tests/vek/registry_fixture.h"

namespace {

using vek::systemInformation;

// The test's key takes the place of HKEY_LOCAL_MACHINE for this process.
class SystemInformationTest : public vek::test::RegistryTest {
  protected:
    SystemInformationTest() {
        EXPECT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, raw), ERROR_SUCCESS);
    }
    ~SystemInformationTest() override { RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr); }

    void storeInformation(const char* name, DWORD type, const std::string& data) {
        const std::string place = "SYSTEM\\CurrentControlSet\\Control\\SystemInformation";
        makeSubkey(place);
        EXPECT_EQ(RegSetKeyValueA(raw, place.c_str(), name, type, data.data(),
                                  static_cast<DWORD>(data.size())),
                  ERROR_SUCCESS);
    }

    static void expectInformation(const std::string& manufacturer, const std::string& product) {
        const vek::SystemInformation found = systemInformation();
        EXPECT_EQ(found.manufacturer, manufacturer);
        EXPECT_EQ(found.product, product);
    }

    const std::string maker = std::string("A maker\0", 8);
    const std::string product = std::string("A product\0", 10);
};

TEST_F(SystemInformationTest, HasManufacturerAndProduct) {
    storeInformation("SystemManufacturer", REG_SZ, maker);
    storeInformation("SystemProductName", REG_SZ, product);
    expectInformation("A maker", "A product");
}

TEST_F(SystemInformationTest, IsEmptyWithoutTheKey) {
    expectInformation("", "");
}

TEST_F(SystemInformationTest, KeepsTheManufacturerIfTheProductIsMissing) {
    storeInformation("SystemManufacturer", REG_SZ, maker);
    expectInformation("A maker", "");
}

TEST_F(SystemInformationTest, EndsAtAMissingManufacturer) {
    storeInformation("SystemProductName", REG_SZ, product);
    expectInformation("", "");
}

TEST_F(SystemInformationTest, EndsAtAnythingThatIsNoText) {
    storeInformation("SystemProductName", REG_SZ, product);
    storeInformation("SystemManufacturer", REG_DWORD, "1234");
    expectInformation("", "");
    storeInformation("SystemManufacturer", REG_DWORD, "12");
    expectInformation("", "");
    storeInformation("SystemManufacturer", REG_EXPAND_SZ, maker);
    expectInformation("", "");
    storeInformation("SystemManufacturer", REG_SZ, maker);
    storeInformation("SystemProductName", REG_QWORD, "1");
    expectInformation("A maker", "");
}

TEST(SystemInformation, OfThisComputerIsReadWithoutAnError) {
    EXPECT_NO_THROW(systemInformation());
}

}  // namespace
