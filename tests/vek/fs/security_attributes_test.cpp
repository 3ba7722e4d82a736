#include "vek/fs/security_attributes.h"

#include <ios>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/heap_blocks.h"
#include "tests/support/thrown.h"
#include "vek/exception.h"

// Behind windows.h, which it needs.
#include <sddl.h>

namespace {

std::string printed(SECURITY_ATTRIBUTES* record, std::ostringstream out = {}) {
    out << vek::fs::SecurityAttributes{record};
    return out.str();
}

TEST(SecurityAttributes, SaySoIfThereIsNoRecord) {
    EXPECT_EQ(printed(nullptr), "attributes not set");
}

TEST(SecurityAttributes, NullDescriptorIsPrintedAsSuch) {
    SECURITY_ATTRIBUTES record = {12, nullptr, FALSE};
    EXPECT_EQ(printed(&record), "len=12 sddl=\"<null>\" inherit=0");
}

TEST(SecurityAttributes, PrintingGivesTheSystemsMemoryBack) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                  "D:(A;OICI;GA;;;AU)", SDDL_REVISION_1, &descriptor, nullptr),
              0);
    SECURITY_ATTRIBUTES record = {sizeof record, descriptor, TRUE};
    EXPECT_TRUE(support::keepsNoMemory([&] { printed(&record); }));
    LocalFree(descriptor);
}

TEST(SecurityAttributes, DescriptorIsPrintedAsItsAccessList) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                  "O:BAG:BAD:(A;OICI;GA;;;AU)", SDDL_REVISION_1, &descriptor, nullptr),
              0);
    SECURITY_ATTRIBUTES record = {sizeof record, descriptor, TRUE};
    // Owner and group are left out.
    EXPECT_EQ(printed(&record), "len=12 sddl=\"D:(A;OICI;GA;;;AU)\" inherit=1");
    LocalFree(descriptor);
}

TEST(SecurityAttributes, NumbersAreDecimalWhateverTheStreamIsSetTo) {
    SECURITY_ATTRIBUTES record = {12, nullptr, 10};
    std::ostringstream out;
    out << std::hex << std::showbase;
    EXPECT_EQ(printed(&record, std::move(out)), "len=12 sddl=\"<null>\" inherit=10");
}

TEST(SecurityAttributes, RefusedDescriptorIsAnOsErrorAndPrintsNothing) {
    unsigned char broken[64] = {99};
    SECURITY_ATTRIBUTES record = {12, broken, FALSE};
    std::ostringstream out;
    EXPECT_EQ(
        vek::test::codeThrownBy<vek::OsError>([&] { out << vek::fs::SecurityAttributes{&record}; }),
        static_cast<std::uint32_t>(ERROR_UNKNOWN_REVISION));
    EXPECT_EQ(out.str(), "");
}

}  // namespace
