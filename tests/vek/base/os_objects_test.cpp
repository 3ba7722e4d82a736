#include "vek/base/os_objects.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "vek/base/os_bounded_text.h"

namespace {

// Names that no other test run uses.
std::string uniqueName(const std::string& name) {
    return "vek-test-" + std::to_string(GetCurrentProcessId()) + "-" + name;
}

class OwnedHandle {
  public:
    explicit OwnedHandle(HANDLE owned) : handle(owned) {}
    ~OwnedHandle() {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    HANDLE get() const { return handle; }

  private:
    HANDLE handle;
};

TEST(GlobalObjectName, PutsThePrefixAheadOfAName) {
    std::array<char, 128> buffer;
    const char* name = vek::os::globalObjectName("x", buffer.data(), buffer.size());
    EXPECT_EQ(name, buffer.data());
    EXPECT_STREQ(name, "Global\\x");
}

TEST(GlobalObjectName, GivesBackWhatItCantPrefix) {
    std::array<char, 128> buffer;
    EXPECT_EQ(vek::os::globalObjectName(nullptr, buffer.data(), buffer.size()), nullptr);
    const char empty[] = "";
    EXPECT_EQ(vek::os::globalObjectName(empty, buffer.data(), buffer.size()), empty);
}

TEST(GlobalObjectName, NameOf119BytesHasThePrefixAndOneOf120HasNot) {
    std::array<char, 128> buffer;
    const std::string longest(119, 'n');
    EXPECT_EQ(vek::os::globalObjectName(longest.c_str(), buffer.data(), buffer.size()),
              "Global\\" + longest);
    for (const std::size_t length : {std::size_t{120}, std::size_t{121}, std::size_t{100000}}) {
        const std::string tooLong(length, 'n');
        EXPECT_EQ(vek::os::globalObjectName(tooLong.c_str(), buffer.data(), buffer.size()),
                  tooLong.c_str());
    }
}

TEST(OpenEvent, OpensAnEventOfTheGlobalNamespace) {
    const std::string name = uniqueName("open");
    const OwnedHandle made(CreateEventA(nullptr, TRUE, FALSE, ("Global\\" + name).c_str()));
    ASSERT_NE(made.get(), nullptr);
    HANDLE event = nullptr;
    ASSERT_EQ(vek::os::openEvent(&event, name.c_str()), 1);
    EXPECT_EQ(vek::os::setEvent(event), 1);
    EXPECT_EQ(WaitForSingleObject(made.get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(vek::os::closeObject(event), 1);
}

TEST(OpenEvent, DoesNotFindAnEventOutsideTheGlobalNamespace) {
    const std::string name = uniqueName("local");
    const OwnedHandle made(CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
    ASSERT_NE(made.get(), nullptr);
    HANDLE event = nullptr;
    EXPECT_EQ(vek::os::openEvent(&event, name.c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(OpenEvent, NameOf120BytesIsUsedAsItStands) {
    const std::string name = uniqueName("") + std::string(120, 'n');
    const OwnedHandle made(CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
    ASSERT_NE(made.get(), nullptr);
    HANDLE event = nullptr;
    EXPECT_EQ(vek::os::openEvent(&event, name.c_str()), 1);
    vek::os::closeObject(event);
}

TEST(OpenEvent, HandleIsNotInherited) {
    const std::string name = uniqueName("inherit");
    const OwnedHandle made(CreateEventA(nullptr, TRUE, FALSE, ("Global\\" + name).c_str()));
    HANDLE event = nullptr;
    ASSERT_EQ(vek::os::openEvent(&event, name.c_str()), 1);
    DWORD flags = HANDLE_FLAG_INHERIT;
    ASSERT_NE(GetHandleInformation(event, &flags), 0);
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0u);
    vek::os::closeObject(event);
}

TEST(OpenEvent, NeverCreatesOne) {
    HANDLE event = nullptr;
    EXPECT_EQ(vek::os::openEvent(&event, uniqueName("absent").c_str()), 0);
    EXPECT_EQ(event, nullptr);
}

TEST(OpenEvent, NullOutputMakesNoSystemCall) {
    SetLastError(12345);
    EXPECT_EQ(vek::os::openEvent(nullptr, "x"), 0);
    EXPECT_EQ(GetLastError(), 12345u);
}

TEST(WaitObject, TellsATimeOutFromASignalByItsResultOnly) {
    const OwnedHandle event(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    std::uint32_t result = 77;
    EXPECT_EQ(vek::os::waitObject(event.get(), 0, &result), 1);
    EXPECT_EQ(result, 258u);
    EXPECT_EQ(vek::os::waitObject(event.get(), 0, nullptr), 1);
    SetEvent(event.get());
    EXPECT_EQ(vek::os::waitObject(event.get(), 0, &result), 1);
    EXPECT_EQ(result, 0u);
}

TEST(WaitObject, FailedWaitGivesZeroAndTheErrorNumber) {
    std::uint32_t result = 77;
    EXPECT_EQ(vek::os::waitObject(nullptr, 0, &result), 0);
    EXPECT_EQ(result, static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(vek::os::waitObject(nullptr, 0, nullptr), 0);
}

TEST(FlatEventFunctions, FailWithTheSystemsErrorOnABadHandle) {
    SetLastError(0);
    EXPECT_EQ(vek::os::setEvent(nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    SetLastError(0);
    EXPECT_EQ(vek::os::closeObject(nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST(BoundedPrint, TerminatesAndTellsWhatItStored) {
    std::array<char, 5> buffer = {'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(vek::os::boundedPrint(buffer.data(), 5, "%d", 123), 3);
    EXPECT_STREQ(buffer.data(), "123");
    EXPECT_EQ(vek::os::boundedPrint(buffer.data(), 5, "%d", 1234567), 4);
    EXPECT_STREQ(buffer.data(), "1234");
    EXPECT_EQ(vek::os::boundedPrint(buffer.data(), 1, "abc"), 0);
    EXPECT_STREQ(buffer.data(), "");
}

TEST(BoundedPrint, SizeOfZeroTouchesNothing) {
    char untouched = 'x';
    EXPECT_EQ(vek::os::boundedPrint(&untouched, 0, "abc"), 0);
    EXPECT_EQ(untouched, 'x');
}

TEST(BoundedCopy, CutsAndTerminates) {
    std::array<char, 4> buffer = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(vek::os::boundedCopy(buffer.data(), 4, "ab"), buffer.data());
    EXPECT_STREQ(buffer.data(), "ab");
    vek::os::boundedCopy(buffer.data(), 4, "abcdef");
    EXPECT_STREQ(buffer.data(), "abc");
}

TEST(BoundedCopy, NullArgumentsGiveNull) {
    std::array<char, 4> buffer;
    EXPECT_EQ(vek::os::boundedCopy(nullptr, 4, "a"), nullptr);
    EXPECT_EQ(vek::os::boundedCopy(buffer.data(), 4, nullptr), nullptr);
    EXPECT_EQ(vek::os::boundedCopy(buffer.data(), 0, "a"), nullptr);
}

}  // namespace
