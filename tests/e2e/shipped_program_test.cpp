// tolmarhlp.exe as it ships, read back from the file.
#include <cstring>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/support/pe_file.h"
#include "vek/base/text.h"

namespace {

// Parts of every supported Windows. A DLL of the compiler would have to be shipped too, and user32,
// shell32 and ole32 double the time that a start takes.
constexpr const char* systemDlls[] = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ws2_32.dll"};

constexpr const char* supportedSystems[] = {
    "{e2011457-1546-43c5-a5fe-008deee3d3f0}",  // Vista
    "{35138b9a-5d96-4fbd-8e2d-a2440225f93a}",  // 7
    "{4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}",  // 8
    "{1f676c76-80e1-4239-95bb-83d0f6d0da78}",  // 8.1
    "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}",  // 10 and later
};

class ShippedProgram : public testing::Test {
  protected:
    const support::PeFile program{TOLMARHLP};

    bool hasFlag(WORD flag) const {
        return (program.optionalHeader().DllCharacteristics & flag) != 0;
    }
};

TEST_F(ShippedProgram, IsA32BitProgramWithoutAConsole) {
    EXPECT_EQ(program.fileHeader().Machine, IMAGE_FILE_MACHINE_I386);
    EXPECT_NE(program.fileHeader().Characteristics & IMAGE_FILE_EXECUTABLE_IMAGE, 0);
    EXPECT_EQ(program.fileHeader().Characteristics & IMAGE_FILE_DLL, 0);
    EXPECT_EQ(program.optionalHeader().Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
}

TEST_F(ShippedProgram, CanBeLoadedAtARandomAddress) {
    EXPECT_TRUE(hasFlag(IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE));
    EXPECT_EQ(program.fileHeader().Characteristics & IMAGE_FILE_RELOCS_STRIPPED, 0);
    // The flag alone has no effect: the code has far more addresses than this.
    EXPECT_GT(program.relocationCount(), 1000u);
}

TEST_F(ShippedProgram, DoesNotExecuteData) {
    EXPECT_TRUE(hasFlag(IMAGE_DLLCHARACTERISTICS_NX_COMPAT));
}

TEST_F(ShippedProgram, OfAReleaseHasNoSymbols) {
#ifndef TOLMAR_RELEASE
    GTEST_SKIP() << "a debug build keeps its symbols";
#endif
    EXPECT_EQ(program.fileHeader().PointerToSymbolTable, 0u);
    EXPECT_EQ(program.fileHeader().NumberOfSymbols, 0u);
}

TEST_F(ShippedProgram, ImportsTheseSystemDllsOnly) {
    const std::set<std::string> allowed(std::begin(systemDlls), std::end(systemDlls));
    const std::vector<std::string> imported = program.importedDlls();
    EXPECT_FALSE(imported.empty());
    for (std::string name : imported) {
        vek::toLower(name);
        EXPECT_TRUE(allowed.contains(name)) << name;
    }
}

class VersionResource : public testing::Test {
  protected:
    void SetUp() override {
        const DWORD size = GetFileVersionInfoSizeA(TOLMARHLP, nullptr);
        ASSERT_NE(size, 0u);
        block.resize(size);
        ASSERT_NE(GetFileVersionInfoA(TOLMARHLP, 0, size, block.data()), 0);
    }

    // `key` of the table for US English in the Windows code page.
    std::string text(const std::string& key) const {
        const std::string path = "\\StringFileInfo\\040904E4\\" + key;
        void* found = nullptr;
        UINT length = 0;
        return VerQueryValueA(block.data(), path.c_str(), &found, &length) != 0
                   ? static_cast<const char*>(found)
                   : "(none)";
    }

    std::string block;
};

std::string dotted(DWORD high, DWORD low) {
    return std::to_string(HIWORD(high)) + "." + std::to_string(LOWORD(high)) + "." +
           std::to_string(HIWORD(low)) + "." + std::to_string(LOWORD(low));
}

TEST_F(VersionResource, NamesTheVersionOfTheProject) {
    void* found = nullptr;
    UINT length = 0;
    ASSERT_NE(VerQueryValueA(block.data(), "\\", &found, &length), 0);
    ASSERT_EQ(length, sizeof(VS_FIXEDFILEINFO));
    VS_FIXEDFILEINFO fixed;
    std::memcpy(&fixed, found, sizeof fixed);
    EXPECT_EQ(dotted(fixed.dwFileVersionMS, fixed.dwFileVersionLS), TOLMAR_VERSION ".0");
    EXPECT_EQ(dotted(fixed.dwProductVersionMS, fixed.dwProductVersionLS), TOLMAR_VERSION ".0");
    EXPECT_EQ(fixed.dwFileType, static_cast<DWORD>(VFT_APP));
    EXPECT_EQ(text("FileVersion"), TOLMAR_VERSION);
    EXPECT_EQ(text("ProductVersion"), TOLMAR_VERSION);
}

TEST_F(VersionResource, NamesTheProgram) {
    EXPECT_EQ(text("FileDescription"), "Update helper of the tolmar service");
    EXPECT_EQ(text("InternalName"), "tolmarhlp");
    EXPECT_EQ(text("OriginalFilename"), "tolmarhlp.exe");
    EXPECT_EQ(text("ProductName"), "tolmar");
}

class Manifest : public testing::Test {
  protected:
    void SetUp() override {
        module = LoadLibraryExA(TOLMARHLP, nullptr, LOAD_LIBRARY_AS_DATAFILE);
        ASSERT_NE(module, nullptr) << GetLastError();
        const HRSRC resource = FindResourceA(module, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24));
        ASSERT_NE(resource, nullptr) << "no manifest of a program";
        const void* data = LockResource(LoadResource(module, resource));
        ASSERT_NE(data, nullptr);
        text.assign(static_cast<const char*>(data), SizeofResource(module, resource));
    }

    void TearDown() override { FreeLibrary(module); }

    bool has(const std::string& part) const { return text.find(part) != std::string::npos; }

    HMODULE module = nullptr;
    std::string text;
};

TEST_F(Manifest, AsksForNoElevation) {
    EXPECT_TRUE(has("<requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\"/>")) << text;
}

TEST_F(Manifest, NamesEverySupportedSystem) {
    for (const char* id : supportedSystems) {
        EXPECT_TRUE(has(std::string("<supportedOS Id=\"") + id + "\"/>")) << id;
    }
}

}  // namespace
