#include "vek/os/objects.h"

#include <array>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/os/test_support.h"
#include "vek/os/process.h"

namespace {

using vek::test::childCommand;
using vek::test::OwnedHandle;
using vek::test::uniqueName;

// Never the error of a call.
constexpr DWORD noError = 12345;

// What a handle may be used for, as the system keeps it.
ACCESS_MASK grantedAccess(HANDLE handle) {
    struct {
        ULONG attributes;
        ACCESS_MASK granted;
        ULONG counts[2];
        ULONG reserved[10];
    } information = {};
    using Query = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQueryObject")));
    constexpr int basicInformation = 0;
    EXPECT_EQ(query(handle, basicInformation, &information, sizeof information, nullptr), 0);
    return information.granted;
}

std::uint32_t runChild(const std::string& arguments) {
    std::uint32_t exitCode = 12345;
    EXPECT_EQ(vek::os::runProcess(childCommand(arguments).c_str(), 0, &exitCode), 1);
    return exitCode;
}

std::uint32_t waited(HANDLE object, std::uint32_t timeoutMs = 0) {
    std::uint32_t result = 12345;
    EXPECT_EQ(vek::os::waitObject(object, timeoutMs, &result), 1);
    return result;
}

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

TEST(GlobalObjectName, NeverWritesPastTheBuffer) {
    std::array<char, 12> buffer;
    buffer.fill('x');
    EXPECT_EQ(vek::os::globalObjectName("name", buffer.data(), 10), buffer.data());
    EXPECT_STREQ(buffer.data(), "Global\\na");
    EXPECT_EQ(buffer[10], 'x');
    EXPECT_EQ(vek::os::globalObjectName("name", nullptr, 10), nullptr);
}

// The three kinds of named objects, which are made and opened alike.
struct Kind {
    const char* name;
    int (*create)(HANDLE*, const char*, std::uint32_t);
    int (*open)(HANDLE*, const char*);
    HANDLE (*systemOpen)(const char*);
    ACCESS_MASK allAccess;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

const Kind kinds[] = {
    {"Semaphore",
     [](HANDLE* handle, const char* name, std::uint32_t flags) {
         return vek::os::createSemaphore(handle, name, 0, flags);
     },
     vek::os::openSemaphore,
     [](const char* name) { return OpenSemaphoreA(SYNCHRONIZE, FALSE, name); }, 0x1F0003},
    {"Event", vek::os::createEvent, vek::os::openEvent,
     [](const char* name) { return OpenEventA(SYNCHRONIZE, FALSE, name); }, 0x1F0003},
    {"Mutex", vek::os::createMutex, vek::os::openMutex,
     [](const char* name) { return OpenMutexA(SYNCHRONIZE, FALSE, name); }, 0x1F0001},
};

class NamedObject : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(Kinds, NamedObject, testing::ValuesIn(kinds),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(NamedObject, IsMadeInTheGlobalNamespace) {
    const std::string name = uniqueName("made");
    OwnedHandle made;
    ASSERT_EQ(GetParam().create(made.out(), name.c_str(), 0), 1);
    const OwnedHandle global(GetParam().systemOpen(("Global\\" + name).c_str()));
    EXPECT_NE(global.get(), nullptr);
    const OwnedHandle local(GetParam().systemOpen(name.c_str()));
    EXPECT_EQ(local.get(), nullptr);
}

TEST_P(NamedObject, IsOpenedWithAllAccess) {
    const std::string name = uniqueName("opened");
    OwnedHandle made;
    ASSERT_EQ(GetParam().create(made.out(), name.c_str(), 0), 1);
    OwnedHandle opened;
    ASSERT_EQ(GetParam().open(opened.out(), name.c_str()), 1);
    EXPECT_EQ(grantedAccess(opened.get()), GetParam().allAccess);
}

TEST_P(NamedObject, HandlesAreNotInherited) {
    const std::string name = uniqueName("inherit");
    for (const std::uint32_t flags : {0u, 1u}) {
        OwnedHandle made;
        ASSERT_EQ(GetParam().create(made.out(), name.c_str(), flags), 1);
        OwnedHandle opened;
        ASSERT_EQ(GetParam().open(opened.out(), name.c_str()), 1);
        for (const HANDLE handle : {made.get(), opened.get()}) {
            DWORD information = HANDLE_FLAG_INHERIT;
            ASSERT_NE(GetHandleInformation(handle, &information), 0);
            EXPECT_EQ(information & HANDLE_FLAG_INHERIT, 0u);
        }
    }
}

TEST_P(NamedObject, OneThatExistsIsOpenedByMakingIt) {
    const std::string name = uniqueName("twice");
    OwnedHandle first;
    ASSERT_EQ(GetParam().create(first.out(), name.c_str(), 0), 1);
    OwnedHandle second;
    SetLastError(noError);
    EXPECT_EQ(GetParam().create(second.out(), name.c_str(), 0), 1);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
}

TEST_P(NamedObject, NameOf119BytesIsGlobalAndOneOf120IsUsedAsItStands) {
    std::string name = uniqueName("long");
    name.resize(119, 'n');
    OwnedHandle longest;
    ASSERT_EQ(GetParam().create(longest.out(), name.c_str(), 0), 1);
    EXPECT_NE(OwnedHandle(GetParam().systemOpen(("Global\\" + name).c_str())).get(), nullptr);
    name.resize(120, 'n');
    OwnedHandle tooLong;
    ASSERT_EQ(GetParam().create(tooLong.out(), name.c_str(), 0), 1);
    EXPECT_EQ(OwnedHandle(GetParam().systemOpen(("Global\\" + name).c_str())).get(), nullptr);
    EXPECT_NE(OwnedHandle(GetParam().systemOpen(name.c_str())).get(), nullptr);
    OwnedHandle opened;
    EXPECT_EQ(GetParam().open(opened.out(), name.c_str()), 1);
}

TEST_P(NamedObject, NullAndEmptyNamesMakeObjectsOfTheirOwn) {
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        OwnedHandle first;
        OwnedHandle second;
        SetLastError(noError);
        EXPECT_EQ(GetParam().create(first.out(), name, 0), 1);
        EXPECT_EQ(GetParam().create(second.out(), name, 0), 1);
        EXPECT_NE(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    }
}

TEST_P(NamedObject, NullAndEmptyNamesOpenNothing) {
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        HANDLE handle = INVALID_HANDLE_VALUE;
        SetLastError(noError);
        EXPECT_EQ(GetParam().open(&handle, name), 0);
        EXPECT_EQ(handle, nullptr);
        EXPECT_NE(GetLastError(), noError);
    }
}

TEST_P(NamedObject, OpeningNeverMakesOne) {
    HANDLE handle = INVALID_HANDLE_VALUE;
    SetLastError(noError);
    EXPECT_EQ(GetParam().open(&handle, uniqueName("absent").c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(handle, nullptr);
}

TEST_P(NamedObject, NameOfAnotherKindIsAnError) {
    const std::string name = uniqueName("taken");
    const OwnedHandle taken(CreateWaitableTimerA(nullptr, TRUE, ("Global\\" + name).c_str()));
    ASSERT_NE(taken.get(), nullptr);
    HANDLE handle = INVALID_HANDLE_VALUE;
    SetLastError(noError);
    EXPECT_EQ(GetParam().create(&handle, name.c_str(), 1), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(handle, nullptr);
    handle = INVALID_HANDLE_VALUE;
    SetLastError(noError);
    EXPECT_EQ(GetParam().open(&handle, name.c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(handle, nullptr);
}

TEST_P(NamedObject, VeryLongNameIsTheSystemsError) {
    HANDLE handle = INVALID_HANDLE_VALUE;
    SetLastError(noError);
    EXPECT_EQ(GetParam().create(&handle, std::string(100000, 'n').c_str(), 0), 0);
    EXPECT_NE(GetLastError(), noError);
    EXPECT_EQ(handle, nullptr);
}

TEST_P(NamedObject, NullOutputMakesNoSystemCall) {
    const std::string name = uniqueName("null");
    SetLastError(noError);
    EXPECT_EQ(GetParam().create(nullptr, name.c_str(), 1), 0);
    EXPECT_EQ(GetParam().open(nullptr, name.c_str()), 0);
    EXPECT_EQ(GetLastError(), noError);
}

TEST(Semaphore, StartsWithTheInitialCount) {
    OwnedHandle none;
    ASSERT_EQ(vek::os::createSemaphore(none.out(), nullptr, 0, 0), 1);
    EXPECT_EQ(waited(none.get()), 258u);
    OwnedHandle one;
    ASSERT_EQ(vek::os::createSemaphore(one.out(), nullptr, 1, 0), 1);
    EXPECT_EQ(waited(one.get()), 0u);
    EXPECT_EQ(waited(one.get()), 258u);
}

TEST(Semaphore, CantBeRaisedAboveOne) {
    OwnedHandle semaphore;
    ASSERT_EQ(vek::os::createSemaphore(semaphore.out(), nullptr, 0, 0), 1);
    EXPECT_EQ(vek::os::releaseSemaphore(semaphore.get()), 1);
    SetLastError(noError);
    EXPECT_EQ(vek::os::releaseSemaphore(semaphore.get()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_TOO_MANY_POSTS));
    EXPECT_EQ(waited(semaphore.get()), 0u);
    EXPECT_EQ(waited(semaphore.get()), 258u);
}

TEST(Semaphore, InitialCountOutsideItsRangeIsTheSystemsError) {
    for (const long count : {2L, -1L, 0x7FFFFFFFL}) {
        HANDLE semaphore = INVALID_HANDLE_VALUE;
        SetLastError(noError);
        EXPECT_EQ(vek::os::createSemaphore(&semaphore, nullptr, count, 0), 0);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
        EXPECT_EQ(semaphore, nullptr);
    }
}

TEST(Semaphore, IsRaisedByAnotherProcess) {
    const std::string name = uniqueName("semaphore");
    OwnedHandle semaphore;
    ASSERT_EQ(vek::os::createSemaphore(semaphore.out(), name.c_str(), 0, 1), 1);
    EXPECT_EQ(runChild("release-semaphore " + name), 0u);
    EXPECT_EQ(runChild("release-semaphore " + name), static_cast<DWORD>(ERROR_TOO_MANY_POSTS));
    EXPECT_EQ(waited(semaphore.get()), 0u);
}

TEST(Event, StartsWithoutASignalAndResetsItself) {
    OwnedHandle event;
    ASSERT_EQ(vek::os::createEvent(event.out(), nullptr, 0), 1);
    EXPECT_EQ(waited(event.get()), 258u);
    EXPECT_EQ(vek::os::setEvent(event.get()), 1);
    EXPECT_EQ(waited(event.get()), 0u);
    EXPECT_EQ(waited(event.get()), 258u);
}

TEST(Event, SignalCanBeTakenAway) {
    OwnedHandle event;
    ASSERT_EQ(vek::os::createEvent(event.out(), nullptr, 0), 1);
    EXPECT_EQ(vek::os::setEvent(event.get()), 1);
    EXPECT_EQ(vek::os::resetEvent(event.get()), 1);
    EXPECT_EQ(waited(event.get()), 258u);
}

TEST(Event, IsSignalledByAnotherProcess) {
    const std::string name = uniqueName("event");
    OwnedHandle event;
    ASSERT_EQ(vek::os::createEvent(event.out(), name.c_str(), 1), 1);
    EXPECT_EQ(runChild("set-event " + name), 0u);
    EXPECT_EQ(waited(event.get()), 0u);
}

TEST(Mutex, IsNotOwnedAtFirst) {
    OwnedHandle mutex;
    ASSERT_EQ(vek::os::createMutex(mutex.out(), nullptr, 0), 1);
    SetLastError(noError);
    EXPECT_EQ(vek::os::releaseMutex(mutex.get()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_OWNER));
    EXPECT_EQ(waited(mutex.get()), 0u);
    std::thread([&mutex] { EXPECT_EQ(waited(mutex.get()), 258u); }).join();
    EXPECT_EQ(vek::os::releaseMutex(mutex.get()), 1);
    std::thread([&mutex] {
        EXPECT_EQ(waited(mutex.get()), 0u);
        EXPECT_EQ(vek::os::releaseMutex(mutex.get()), 1);
    }).join();
}

TEST(Mutex, OfAProcessThatEndedIsAbandoned) {
    const std::string name = uniqueName("mutex");
    OwnedHandle mutex;
    ASSERT_EQ(vek::os::createMutex(mutex.out(), name.c_str(), 1), 1);
    EXPECT_EQ(runChild("abandon-mutex " + name), 0u);
    EXPECT_EQ(waited(mutex.get()), 128u);
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

TEST(WaitObject, WaitsAsLongAsItIsTold) {
    const OwnedHandle event(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(waited(event.get(), 200), 258u);
    EXPECT_GE(GetTickCount64() - start, 180u);
    std::thread signaller([&event] { SetEvent(event.get()); });
    EXPECT_EQ(waited(event.get(), INFINITE), 0u);
    signaller.join();
}

TEST(WaitObject, FailedWaitGivesZeroAndTheErrorNumber) {
    std::uint32_t result = 77;
    EXPECT_EQ(vek::os::waitObject(nullptr, 0, &result), 0);
    EXPECT_EQ(result, static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(vek::os::waitObject(nullptr, 0, nullptr), 0);
}

// Two events, of which some are signalled.
class WaitObjects : public testing::Test {
  protected:
    std::uint32_t wait(int waitAll) {
        std::uint32_t result = 77;
        EXPECT_EQ(vek::os::waitObjects(handles.data(), 2, waitAll, 0, &result), 1);
        return result;
    }

    const OwnedHandle first{CreateEventA(nullptr, FALSE, FALSE, nullptr)};
    const OwnedHandle second{CreateEventA(nullptr, FALSE, FALSE, nullptr)};
    const std::array<HANDLE, 2> handles = {first.get(), second.get()};
};

TEST_F(WaitObjects, AnyTellsWhichOneEndedIt) {
    EXPECT_EQ(wait(0), 258u);
    SetEvent(second.get());
    EXPECT_EQ(wait(0), 1u);
    EXPECT_EQ(wait(0), 258u);
    SetEvent(first.get());
    SetEvent(second.get());
    EXPECT_EQ(wait(0), 0u);
    EXPECT_EQ(wait(0), 1u);
}

TEST_F(WaitObjects, AllWaitsForTheLastAndTakesNoneBefore) {
    SetEvent(first.get());
    EXPECT_EQ(wait(1), 258u);
    EXPECT_EQ(wait(-1), 258u);
    SetEvent(second.get());
    EXPECT_EQ(wait(1), 0u);
    EXPECT_EQ(wait(0), 258u);
}

TEST_F(WaitObjects, TimeOutIsSuccessWithoutAResultToStore) {
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(vek::os::waitObjects(handles.data(), 2, 0, 200, nullptr), 1);
    EXPECT_GE(GetTickCount64() - start, 180u);
}

TEST_F(WaitObjects, FailedWaitGivesZeroAndTheErrorNumber) {
    const std::array<HANDLE, 2> bad = {first.get(), nullptr};
    std::uint32_t result = 77;
    EXPECT_EQ(vek::os::waitObjects(bad.data(), 2, 0, 0, &result), 0);
    EXPECT_EQ(result, static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(vek::os::waitObjects(bad.data(), 2, 0, 0, nullptr), 0);
}

TEST_F(WaitObjects, TakesOneTo64Objects) {
    const std::vector<HANDLE> many(65, first.get());
    std::uint32_t result = 77;
    EXPECT_EQ(vek::os::waitObjects(many.data(), 65, 0, 0, &result), 0);
    EXPECT_EQ(result, static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(vek::os::waitObjects(many.data(), 64, 0, 0, &result), 1);
    EXPECT_EQ(result, 258u);
    EXPECT_EQ(vek::os::waitObjects(many.data(), 1, 0, 0, &result), 1);
    EXPECT_EQ(result, 258u);
    EXPECT_EQ(vek::os::waitObjects(many.data(), 0, 0, 0, &result), 0);
    EXPECT_EQ(result, static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
}

TEST_F(WaitObjects, NullArrayIsAnError) {
    std::uint32_t result = 77;
    EXPECT_EQ(vek::os::waitObjects(nullptr, 2, 0, 0, &result), 0);
    EXPECT_EQ(result, static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
}

TEST_F(WaitObjects, AbandonedMutexIsSuccessAndCountsFrom128) {
    OwnedHandle mutex;
    ASSERT_EQ(vek::os::createMutex(mutex.out(), nullptr, 0), 1);
    std::thread([&mutex] { waited(mutex.get()); }).join();
    const std::array<HANDLE, 2> objects = {first.get(), mutex.get()};
    std::uint32_t result = 77;
    EXPECT_EQ(vek::os::waitObjects(objects.data(), 2, 0, 0, &result), 1);
    EXPECT_EQ(result, 129u);
}

TEST(FlatObjectFunctions, FailWithTheSystemsErrorOnABadHandle) {
    for (const auto function : {vek::os::releaseSemaphore, vek::os::setEvent, vek::os::resetEvent,
                                vek::os::releaseMutex, vek::os::closeObject}) {
        SetLastError(noError);
        EXPECT_EQ(function(nullptr), 0);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    }
}

TEST(CloseObject, EndsTheHandle) {
    HANDLE event = nullptr;
    ASSERT_EQ(vek::os::createEvent(&event, nullptr, 0), 1);
    EXPECT_EQ(vek::os::closeObject(event), 1);
    EXPECT_EQ(vek::os::closeObject(event), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

}  // namespace
