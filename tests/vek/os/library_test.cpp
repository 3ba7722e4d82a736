#include "vek/os/library.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "tests/vek/temporary_directory.h"

namespace {

constexpr char systemLibrary[] = "cabinet.dll";
const std::string veryLong(100000, 'n');

// The path of this test's program, by the system.
std::string modulePath() {
    std::array<char, MAX_PATH> path = {};
    GetModuleFileNameA(nullptr, path.data(), path.size());
    return path.data();
}

std::string moduleDirectory() {
    return modulePath().substr(0, modulePath().rfind('\\'));
}

class Library : public vek::test::TemporaryDirectoryTest {};

TEST_F(Library, IsLoadedAndGivenBack) {
    ASSERT_EQ(GetModuleHandleA(systemLibrary), nullptr);
    const HMODULE module = vek::os::loadLibrary(systemLibrary);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(GetModuleHandleA(systemLibrary), module);
    EXPECT_EQ(vek::os::freeLibrary(module), 1);
    EXPECT_EQ(GetModuleHandleA(systemLibrary), nullptr);
}

TEST_F(Library, NullAndEmptyNamesLoadNothing) {
    SetLastError(12345);
    EXPECT_EQ(vek::os::loadLibrary(nullptr), nullptr);
    EXPECT_EQ(vek::os::loadLibrary(""), nullptr);
    EXPECT_EQ(GetLastError(), 12345u);
}

TEST_F(Library, MissingOneIsTheSystemsError) {
    SetLastError(0);
    EXPECT_EQ(vek::os::loadLibrary(path("missing.dll").c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(vek::os::loadLibrary(path(veryLong).c_str()), nullptr);
}

TEST_F(Library, FunctionsAreFoundByName) {
    const HMODULE kernel = GetModuleHandleA("kernel32.dll");
    EXPECT_EQ(vek::os::libraryFunction(kernel, "GetTickCount"),
              GetProcAddress(kernel, "GetTickCount"));
    EXPECT_NE(vek::os::libraryFunction(kernel, "GetTickCount"), nullptr);
    SetLastError(0);
    EXPECT_EQ(vek::os::libraryFunction(kernel, "NoSuchFunction"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
    EXPECT_EQ(vek::os::libraryFunction(kernel, veryLong.c_str()), nullptr);
}

TEST_F(Library, NullAndEmptyArgumentsFindNoFunction) {
    SetLastError(12345);
    EXPECT_EQ(vek::os::libraryFunction(nullptr, "GetTickCount"), nullptr);
    const HMODULE kernel = GetModuleHandleA("kernel32.dll");
    SetLastError(12345);
    EXPECT_EQ(vek::os::libraryFunction(kernel, nullptr), nullptr);
    EXPECT_EQ(vek::os::libraryFunction(kernel, ""), nullptr);
    EXPECT_EQ(GetLastError(), 12345u);
}

TEST_F(Library, GivingBackNoneIsSuccessAndABadOneIsNot) {
    EXPECT_EQ(vek::os::freeLibrary(nullptr), 1);
    SetLastError(0);
    EXPECT_EQ(vek::os::freeLibrary(reinterpret_cast<HMODULE>(0x10000)), 0);
    EXPECT_NE(GetLastError(), 0u);
}

TEST_F(Library, ReportTellsOfSuccess) {
    const char* text = nullptr;
    const HMODULE module = vek::os::loadLibraryReport(systemLibrary, &text);
    EXPECT_NE(module, nullptr);
    EXPECT_STREQ(text, "success");
    EXPECT_EQ(vek::os::freeLibrary(module), 1);
    const HMODULE again = vek::os::loadLibraryReport(systemLibrary, nullptr);
    EXPECT_NE(again, nullptr);
    EXPECT_EQ(vek::os::freeLibrary(again), 1);
}

TEST_F(Library, ReportTellsOfAMissingName) {
    const char* text = nullptr;
    EXPECT_EQ(vek::os::loadLibraryReport(nullptr, &text), nullptr);
    EXPECT_STREQ(text, "filename missing");
    text = nullptr;
    EXPECT_EQ(vek::os::loadLibraryReport("", &text), nullptr);
    EXPECT_STREQ(text, "filename missing");
    EXPECT_EQ(vek::os::loadLibraryReport(nullptr, nullptr), nullptr);
    EXPECT_EQ(vek::os::loadLibraryReport("", nullptr), nullptr);
}

TEST_F(Library, ReportGivesTheSystemsTextOfAFailureInOneBuffer) {
    std::array<char, 128> expected = {};
    ASSERT_NE(FormatMessageA(0x1200, nullptr, ERROR_MOD_NOT_FOUND, 0, expected.data(),
                             expected.size(), nullptr),
              0u);
    const char* text = nullptr;
    SetLastError(0);
    EXPECT_EQ(vek::os::loadLibraryReport(path("missing.dll").c_str(), &text), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_STREQ(text, expected.data());
    writeFile("bad.dll", "no library");
    const char* second = nullptr;
    EXPECT_EQ(vek::os::loadLibraryReport(path("bad.dll").c_str(), &second), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_EXE_FORMAT));
    // Deliberate: a failure replaces the text of the one before.
    EXPECT_EQ(second, text);
    EXPECT_STRNE(text, expected.data());
    // That text has an insert, which stays as it is.
    expected.fill('\0');
    ASSERT_NE(FormatMessageA(0x1200, nullptr, ERROR_BAD_EXE_FORMAT, 0, expected.data(),
                             expected.size(), nullptr),
              0u);
    EXPECT_STREQ(text, expected.data());
    EXPECT_NE(std::string(text).find("%1"), std::string::npos);
    EXPECT_EQ(vek::os::loadLibraryReport(path("missing.dll").c_str(), nullptr), nullptr);
}

TEST_F(Library, ReportGivesTheNumberOfAFailureWithoutText) {
    const std::string failing = moduleDirectory() + "\\os_failing_library.dll";
    const char* text = nullptr;
    EXPECT_EQ(vek::os::loadLibraryReport(failing.c_str(), &text), nullptr);
    EXPECT_EQ(GetLastError(), 0x20000001u);
    EXPECT_STREQ(text, "Error 536870913 occured");
}

// The system's text of an error.
std::string systemsText(DWORD error) {
    std::array<char, 4096> text = {};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, error, 0, text.data(), text.size(), nullptr);
    return std::string(text.data(), length);
}

// The text that loadLibraryReport gives for `error`.
std::string reportOf(DWORD error) {
    SetEnvironmentVariableA("OS_FAILING_LIBRARY_ERROR", std::to_string(error).c_str());
    const char* text = nullptr;
    EXPECT_EQ(
        vek::os::loadLibraryReport((moduleDirectory() + "\\os_failing_library.dll").c_str(), &text),
        nullptr);
    EXPECT_EQ(GetLastError(), error);
    SetEnvironmentVariableA("OS_FAILING_LIBRARY_ERROR", nullptr);
    return text;
}

TEST(LibraryReport, GivesTextsOfLessThan128BytesWholeAndTheNumberInPlaceOfLongerOnes) {
    DWORD longest = 0;
    DWORD tooLong = 0;
    for (DWORD error = 1; error < 0x10000; ++error) {
        const std::size_t length = systemsText(error).size();
        if (length < 128 && length > systemsText(longest).size()) {
            longest = error;
        }
        if (length >= 128 && (tooLong == 0 || length < systemsText(tooLong).size())) {
            tooLong = error;
        }
    }
    ASSERT_NE(longest, 0u);
    EXPECT_EQ(reportOf(longest), systemsText(longest));
    if (tooLong == 0) {
        GTEST_SKIP() << "the longest text of this system has " << systemsText(longest).size()
                     << " bytes";
    }
    EXPECT_EQ(reportOf(tooLong), "Error " + std::to_string(tooLong) + " occured");
}

TEST(ProgramPath, IsTheDirectoryOfTheProgram) {
    std::array<char, MAX_PATH> buffer = {};
    std::uint32_t error = 77;
    EXPECT_EQ(vek::os::programPath(buffer.data(), buffer.size(), &error), 1);
    EXPECT_EQ(error, 0u);
    EXPECT_EQ(buffer.data(), moduleDirectory());
    EXPECT_EQ(vek::os::programPath(buffer.data(), buffer.size(), nullptr), 1);
}

TEST(ProgramPath, NameBehindTheBackslashIsGivenIfAskedFor) {
    std::array<char, MAX_PATH> buffer = {};
    std::array<char, MAX_PATH> name = {};
    std::uint32_t error = 77;
    EXPECT_EQ(
        vek::os::programPathAndName(buffer.data(), buffer.size(), &error, name.data(), name.size()),
        1);
    EXPECT_EQ(error, 0u);
    EXPECT_EQ(buffer.data(), moduleDirectory());
    EXPECT_EQ(buffer.data() + std::string("\\") + name.data(), modulePath());
    EXPECT_EQ(vek::os::programPathAndName(buffer.data(), buffer.size(), nullptr, nullptr, 260), 1);
    EXPECT_EQ(buffer.data(), moduleDirectory());
}

TEST(ProgramPath, NameIsCutToItsBuffer) {
    std::array<char, MAX_PATH> buffer = {};
    std::array<char, 6> name;
    name.fill('x');
    EXPECT_EQ(vek::os::programPathAndName(buffer.data(), buffer.size(), nullptr, name.data(), 5),
              1);
    EXPECT_EQ(name.data(), modulePath().substr(moduleDirectory().size() + 1, 4));
    EXPECT_EQ(name[5], 'x');
    name.fill('x');
    EXPECT_EQ(vek::os::programPathAndName(buffer.data(), buffer.size(), nullptr, name.data(), 0),
              1);
    EXPECT_EQ(name[0], 'x');
}

TEST(ProgramPath, NullBufferIsError87) {
    std::uint32_t error = 77;
    EXPECT_EQ(vek::os::programPath(nullptr, 260, &error), 0);
    EXPECT_EQ(error, 87u);
    EXPECT_EQ(vek::os::programPath(nullptr, 0, nullptr), 0);
    std::array<char, 10> name = {'x', '\0'};
    error = 77;
    EXPECT_EQ(vek::os::programPathAndName(nullptr, 260, &error, name.data(), name.size()), 0);
    EXPECT_EQ(error, 87u);
    EXPECT_STREQ(name.data(), "x");
}

TEST(ProgramPath, BufferThatTheNameFillsIsError111) {
    const std::size_t length = modulePath().size();
    std::array<char, MAX_PATH + 1> buffer = {};
    for (const std::size_t size : {length, length - 1, std::size_t{10}, std::size_t{1}}) {
        buffer.fill('x');
        std::uint32_t error = 77;
        EXPECT_EQ(vek::os::programPath(buffer.data(), size, &error), 0) << size;
        EXPECT_EQ(error, 111u) << size;
        EXPECT_STREQ(buffer.data(), "") << size;
        EXPECT_EQ(buffer[size], 'x') << size;
    }
    buffer[0] = 'x';
    std::uint32_t error = 77;
    EXPECT_EQ(vek::os::programPath(buffer.data(), 0, &error), 0);
    EXPECT_EQ(error, 111u);
    EXPECT_EQ(buffer[0], 'x');
    EXPECT_EQ(vek::os::programPath(buffer.data(), length + 1, &error), 1);
    EXPECT_EQ(error, 0u);
}

}  // namespace
