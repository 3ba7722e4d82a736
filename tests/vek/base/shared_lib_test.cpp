#include "vek/base/shared_lib.h"

#include <array>
#include <memory>

#include <gtest/gtest.h>

#include "vek/base/os_error_text.h"

namespace {

using vek::osErrorText;
using vek::SharedLib;
using vek::SharedLibError;
using vek::UsageError;

// A system library that nothing of this program has loaded.
constexpr const char* spareLibrary = "winmm";

// The text of the exception of class E that `f` throws.
template <class E, class F>
std::string textOf(F f) {
    try {
        f();
    } catch (const E& error) {
        return error.what();
    }
    return "(nothing was thrown)";
}

// A loaded object whose module somebody else has released.
std::unique_ptr<SharedLib> libraryThatCannotBeClosed() {
    auto library = std::make_unique<SharedLib>();
    library->load(spareLibrary, 0);
    const HMODULE module = GetModuleHandleA(spareLibrary);
    EXPECT_NE(module, nullptr);
    EXPECT_NE(FreeLibrary(module), 0);
    EXPECT_EQ(GetModuleHandleA(spareLibrary), nullptr);
    return library;
}

TEST(SharedLib, ResolvesASymbolOfTheLoadedLibrary) {
    SharedLib library;
    library.load("kernel32", 0);
    EXPECT_EQ(library.resolve("GetTickCount"),
              GetProcAddress(GetModuleHandleA("kernel32"), "GetTickCount"));
}

TEST(SharedLib, SecondLoadThrowsAndKeepsTheFirstLibrary) {
    SharedLib library;
    library.load("kernel32", 0);
    EXPECT_EQ(textOf<UsageError>([&] { library.load(spareLibrary, 0); }),
              "Usage error: There is already a shared-library loaded.");
    EXPECT_EQ(GetModuleHandleA(spareLibrary), nullptr);
    EXPECT_NE(library.resolve("GetTickCount"), nullptr);
}

TEST(SharedLib, FailedLoadTellsTheSystemsErrorAndLeavesTheObjectFree) {
    EXPECT_EQ(LoadLibraryExA("no such library", nullptr, 0), nullptr);
    const DWORD expected = GetLastError();
    SharedLib library;
    EXPECT_EQ(textOf<SharedLibError>([&] { library.load("no such library", 0); }),
              "Dynamic linker error encountered. " + osErrorText(expected));
    EXPECT_THROW(library.resolve("GetTickCount"), UsageError);
    library.load("kernel32", 0);
    EXPECT_NE(library.resolve("GetTickCount"), nullptr);
}

TEST(SharedLib, HostileNamesAreNotLoaded) {
    SharedLib library;
    EXPECT_THROW(library.load("", 0), SharedLibError);
    EXPECT_THROW(library.load(std::string(70000, 'x'), 0), SharedLibError);
    EXPECT_THROW(library.load("C:\\windows", 0), SharedLibError);
}

TEST(SharedLib, FlagsAreNotHandedOn) {
    SharedLib library;
    library.load(spareLibrary, LOAD_LIBRARY_AS_DATAFILE);
    // A library that is loaded as data has no module of its own.
    EXPECT_NE(GetModuleHandleA(spareLibrary), nullptr);
    EXPECT_NE(library.resolve("timeGetTime"), nullptr);
}

TEST(SharedLib, ResolveBeforeLoadThrows) {
    const SharedLib library;
    EXPECT_EQ(textOf<UsageError>([&] { library.resolve("GetTickCount"); }),
              "Usage error: Tried to resolve symbol but no library is loaded.");
}

TEST(SharedLib, MissingSymbolIsNamedInTheError) {
    SharedLib library;
    library.load("kernel32", 0);
    EXPECT_EQ(
        textOf<SharedLibError>([&] { library.resolve("NoSuchFunction"); }),
        "Dynamic linker error encountered. NoSuchFunction: " + osErrorText(ERROR_PROC_NOT_FOUND));
}

TEST(SharedLib, CloseLetsTheLibraryGoAndIsDoneOnce) {
    SharedLib library;
    library.load(spareLibrary, 0);
    EXPECT_NE(GetModuleHandleA(spareLibrary), nullptr);
    library.close();
    EXPECT_EQ(GetModuleHandleA(spareLibrary), nullptr);
    EXPECT_NO_THROW(library.close());
    EXPECT_THROW(library.resolve("timeGetTime"), UsageError);
}

TEST(SharedLib, CloseOfNothingDoesNothing) {
    SharedLib library;
    EXPECT_NO_THROW(library.close());
}

TEST(SharedLib, CanBeLoadedAgainAfterClose) {
    SharedLib library;
    library.load("kernel32", 0);
    library.close();
    library.load(spareLibrary, 0);
    EXPECT_NE(library.resolve("timeGetTime"), nullptr);
}

TEST(SharedLib, FailedCloseThrowsAndStillForgetsTheLibrary) {
    const std::unique_ptr<SharedLib> library = libraryThatCannotBeClosed();
    EXPECT_EQ(textOf<SharedLibError>([&] { library->close(); }),
              "Dynamic linker error encountered. " + osErrorText(ERROR_MOD_NOT_FOUND));
    EXPECT_NO_THROW(library->close());
    library->load("kernel32", 0);
    EXPECT_NE(library->resolve("GetTickCount"), nullptr);
}

TEST(SharedLib, DestructorClosesTheLibrary) {
    {
        SharedLib library;
        library.load(spareLibrary, 0);
        EXPECT_NE(GetModuleHandleA(spareLibrary), nullptr);
    }
    EXPECT_EQ(GetModuleHandleA(spareLibrary), nullptr);
}

TEST(SharedLib, DestructorReportsAFailedCloseAndThrowsNothing) {
    std::unique_ptr<SharedLib> library = libraryThatCannotBeClosed();
    testing::internal::CaptureStderr();
    library.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error closing shared library:Dynamic linker error encountered. " +
                  osErrorText(ERROR_MOD_NOT_FOUND) + "\n");
}

TEST(SharedLib, ModulePathIsThatOfTheModulesFile) {
    std::array<char, 260> expected = {};
    GetModuleFileNameA(GetModuleHandleA("kernel32"), expected.data(), expected.size());
    EXPECT_EQ(SharedLib::modulePath(GetModuleHandleA("kernel32")), expected.data());
    GetModuleFileNameA(nullptr, expected.data(), expected.size());
    EXPECT_EQ(SharedLib::modulePath(nullptr), expected.data());
}

TEST(SharedLib, ModulePathOfSomethingElseThrows) {
    EXPECT_EQ(
        textOf<SharedLibError>([] { SharedLib::modulePath(reinterpret_cast<HMODULE>(0x1234)); }),
        "Dynamic linker error encountered. " + osErrorText(ERROR_MOD_NOT_FOUND));
}

TEST(SharedLibError, TakesTheErrorWhenItIsBuilt) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    const SharedLibError error;
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(error.description(),
              "Dynamic linker error encountered. " + osErrorText(ERROR_FILE_NOT_FOUND));
}

TEST(SharedLibError, TextIsPutTogetherAtTheFirstDescription) {
    struct Opened : SharedLibError {
        using SharedLibError::SharedLibError;
        using SharedLibError::text;
    };
    SetLastError(ERROR_FILE_NOT_FOUND);
    const Opened error("symbol");
    EXPECT_EQ(error.text, "");
    const std::string description = error.description();
    EXPECT_EQ(description,
              "Dynamic linker error encountered. symbol: " + osErrorText(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(error.text, description);
    error.text = "kept";
    EXPECT_EQ(error.description(), "kept");
}

TEST(SharedLibError, IsRaisedAndClonedWholeBeforeItsTextIsAskedFor) {
    SetLastError(ERROR_ACCESS_DENIED);
    const SharedLibError error("symbol");
    const std::string expected =
        "Dynamic linker error encountered. symbol: " + osErrorText(ERROR_ACCESS_DENIED);
    const std::unique_ptr<vek::Exception> copy(error.clone());
    EXPECT_NE(dynamic_cast<SharedLibError*>(copy.get()), nullptr);
    EXPECT_EQ(copy->what(), expected);
    EXPECT_EQ(textOf<SharedLibError>([&] { error.raise(); }), expected);
}

TEST(Kernel32Library, IsOneLoadedObject) {
    EXPECT_EQ(&vek::kernel32Library(), &vek::kernel32Library());
    EXPECT_EQ(vek::kernel32Library().resolve("Sleep"),
              GetProcAddress(GetModuleHandleA("kernel32"), "Sleep"));
}

}  // namespace
