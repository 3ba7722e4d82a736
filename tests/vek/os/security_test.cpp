#include "vek/os/security.h"

#include <array>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sddl.h>

#include "tests/vek/os/test_support.h"
#include "vek/os/objects.h"
#include "vek/os/shared_memory.h"

namespace {

using vek::test::OwnedHandle;
using vek::test::uniqueName;

constexpr char sharedText[] = "D:(D;OICI;GA;;;BG)(D;OICI;GA;;;AN)(A;OICI;GA;;;AU)(A;OICI;GA;;;BA)";

std::string accessText(PSECURITY_DESCRIPTOR descriptor) {
    char* text = nullptr;
    if (ConvertSecurityDescriptorToStringSecurityDescriptorA(
            descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr) == 0) {
        return "error " + std::to_string(GetLastError());
    }
    std::string result = text;
    LocalFree(text);
    return result;
}

std::string accessTextOf(HANDLE object) {
    std::array<std::byte, 4096> descriptor;
    DWORD needed = 0;
    if (GetKernelObjectSecurity(object, DACL_SECURITY_INFORMATION, descriptor.data(),
                                descriptor.size(), &needed) == 0) {
        return "error " + std::to_string(GetLastError());
    }
    return accessText(descriptor.data());
}

// What the shared security reads as on an object: the system may put an object's own rights in the
// place of the generic ones.
std::string sharedTextWith(const std::string& rights) {
    std::string text = sharedText;
    for (std::size_t at = text.find("GA"); at != std::string::npos; at = text.find("GA")) {
        text.replace(at, 2, rights);
    }
    return text;
}

void expectShared(HANDLE object, const std::string& allRights) {
    const std::string text = accessTextOf(object);
    EXPECT_TRUE(text == sharedText || text == sharedTextWith(allRights)) << text;
}

TEST(SharedSecurityAttributes, IsTheSameRecordAtEachCall) {
    const SECURITY_ATTRIBUTES* attributes = vek::os::sharedSecurityAttributes();
    ASSERT_NE(attributes, nullptr);
    EXPECT_EQ(vek::os::sharedSecurityAttributes(), attributes);
    EXPECT_EQ(attributes->nLength, 12u);
    EXPECT_EQ(attributes->bInheritHandle, FALSE);
}

TEST(SharedSecurityAttributes, IsTheSameRecordForThreadsThatAskAtOnce) {
    std::array<const SECURITY_ATTRIBUTES*, 8> seen = {};
    std::vector<std::thread> threads;
    for (auto& one : seen) {
        threads.emplace_back([&one] { one = vek::os::sharedSecurityAttributes(); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    ASSERT_NE(seen[0], nullptr);
    for (const auto* one : seen) {
        EXPECT_EQ(one, seen[0]);
    }
}

TEST(SharedSecurityAttributes, DeniesGuestsAndAnonymousAndAllowsUsersAndAdministrators) {
    EXPECT_EQ(accessText(vek::os::sharedSecurityAttributes()->lpSecurityDescriptor), sharedText);
}

// The leak is deliberate: a thread that holds the record may use the descriptor of before.
TEST(SharedSecurityAttributes, MakesADescriptorAtEachCallAndKeepsTheFormerOne) {
    PSECURITY_DESCRIPTOR former = vek::os::sharedSecurityAttributes()->lpSecurityDescriptor;
    EXPECT_NE(vek::os::sharedSecurityAttributes()->lpSecurityDescriptor, former);
    EXPECT_EQ(accessText(former), sharedText);
}

TEST(SecurityAttributesFor, OnlyBitZeroAsksForTheSharedOnes) {
    EXPECT_EQ(vek::os::securityAttributesFor(0), nullptr);
    EXPECT_EQ(vek::os::securityAttributesFor(0xFFFFFFFE), nullptr);
    EXPECT_EQ(vek::os::securityAttributesFor(1), vek::os::sharedSecurityAttributes());
    EXPECT_EQ(vek::os::securityAttributesFor(0xFFFFFFFF), vek::os::sharedSecurityAttributes());
}

TEST(SharedSecurity, IsOnNamedObjectsMadeWithTheFlag) {
    OwnedHandle semaphore;
    ASSERT_EQ(vek::os::createSemaphore(semaphore.out(), uniqueName("s").c_str(), 0, 1), 1);
    expectShared(semaphore.get(), "0x1f0003");
    OwnedHandle event;
    ASSERT_EQ(vek::os::createEvent(event.out(), uniqueName("e").c_str(), 1), 1);
    expectShared(event.get(), "0x1f0003");
    OwnedHandle mutex;
    ASSERT_EQ(vek::os::createMutex(mutex.out(), uniqueName("m").c_str(), 1), 1);
    expectShared(mutex.get(), "0x1f0001");
    vek::os::SharedMemory memory = {};
    ASSERT_EQ(vek::os::createSharedMemory(&memory, 10, nullptr, uniqueName("v").c_str(), 1), 1);
    expectShared(memory.mapping, "0xf001f");
    EXPECT_EQ(vek::os::closeSharedMemory(&memory), 1);
}

TEST(SharedSecurity, IsNotOnNamedObjectsMadeWithoutTheFlag) {
    OwnedHandle plain(CreateEventA(nullptr, FALSE, FALSE, uniqueName("plain").c_str()));
    const std::string byDefault = accessTextOf(plain.get());
    ASSERT_NE(byDefault, sharedText);
    OwnedHandle semaphore;
    ASSERT_EQ(vek::os::createSemaphore(semaphore.out(), uniqueName("s").c_str(), 0, 2), 1);
    EXPECT_EQ(accessTextOf(semaphore.get()), byDefault);
    OwnedHandle event;
    ASSERT_EQ(vek::os::createEvent(event.out(), uniqueName("e").c_str(), 0), 1);
    EXPECT_EQ(accessTextOf(event.get()), byDefault);
    OwnedHandle mutex;
    ASSERT_EQ(vek::os::createMutex(mutex.out(), uniqueName("m").c_str(), 0), 1);
    EXPECT_EQ(accessTextOf(mutex.get()), byDefault);
    vek::os::SharedMemory memory = {};
    ASSERT_EQ(vek::os::createSharedMemory(&memory, 10, nullptr, uniqueName("v").c_str(), 0), 1);
    EXPECT_EQ(accessTextOf(memory.mapping), byDefault);
    EXPECT_EQ(vek::os::closeSharedMemory(&memory), 1);
}

}  // namespace
