#include "vek/os/shared_memory.h"

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/os/test_support.h"
#include "tests/vek/temporary_directory.h"
#include "vek/os/process.h"

namespace {

using vek::os::closeSharedMemory;
using vek::os::createSharedMemory;
using vek::os::openSharedMemory;
using vek::os::SharedMemory;
using vek::test::OwnedHandle;
using vek::test::uniqueName;

char* text(const SharedMemory& memory) {
    return static_cast<char*>(memory.view);
}

// A record as an unlucky caller hands it over.
SharedMemory garbage() {
    SharedMemory memory;
    std::memset(&memory, 0x55, sizeof memory);
    return memory;
}

class SharedMemoryTest : public vek::test::TemporaryDirectoryTest {
  protected:
    const std::string name = uniqueName("memory");
};

TEST_F(SharedMemoryTest, NewOneIsBackedByThePageFile) {
    for (const char* fileName : {static_cast<const char*>(nullptr), ""}) {
        SharedMemory memory = garbage();
        ASSERT_EQ(createSharedMemory(&memory, 5000, fileName, name.c_str(), 0), 1);
        EXPECT_EQ(memory.file, INVALID_HANDLE_VALUE);
        EXPECT_NE(memory.mapping, nullptr);
        EXPECT_EQ(memory.size, 5000u);
        EXPECT_EQ(memory.created, 1);
        // That of the attempt to open an existing one.
        EXPECT_EQ(memory.lastError, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
        ASSERT_NE(memory.view, nullptr);
        EXPECT_EQ(text(memory)[0], 0);
        text(memory)[4999] = 'x';
        EXPECT_EQ(closeSharedMemory(&memory), 1);
    }
}

TEST_F(SharedMemoryTest, ExistingOneIsOpenedAndItsClosingGivesZero) {
    SharedMemory first = {};
    ASSERT_EQ(createSharedMemory(&first, 100, nullptr, name.c_str(), 0), 1);
    std::strcpy(text(first), "shared");
    SharedMemory second = garbage();
    ASSERT_EQ(createSharedMemory(&second, 50, path("unused").c_str(), name.c_str(), 0), 1);
    EXPECT_EQ(second.file, nullptr);
    EXPECT_NE(second.mapping, nullptr);
    EXPECT_EQ(second.size, 50u);
    EXPECT_EQ(second.created, 0);
    EXPECT_EQ(second.lastError, 0u);
    ASSERT_NE(second.view, nullptr);
    EXPECT_STREQ(text(second), "shared");
    EXPECT_EQ(GetFileAttributesA(path("unused").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(closeSharedMemory(&first), 1);
    // Deliberate: the record has no file, and there is none to close.
    EXPECT_EQ(closeSharedMemory(&second), 0);
    SharedMemory third = {};
    EXPECT_EQ(openSharedMemory(&third, 50, name.c_str()), 0) << "something was left open";
}

TEST_F(SharedMemoryTest, ViewIsNullAndTheResultOneWhereTheMemoryIsSmallerThanAskedFor) {
    SharedMemory small = {};
    ASSERT_EQ(createSharedMemory(&small, 100, nullptr, name.c_str(), 0), 1);
    SharedMemory large = garbage();
    EXPECT_EQ(createSharedMemory(&large, 1000000, nullptr, name.c_str(), 0), 1);
    EXPECT_EQ(large.view, nullptr);
    EXPECT_EQ(large.size, 1000000u);
    EXPECT_EQ(large.lastError, 0u);
    EXPECT_EQ(closeSharedMemory(&large), 0);
    EXPECT_EQ(closeSharedMemory(&small), 1);
}

TEST_F(SharedMemoryTest, ExistingOneIsOpenedByName) {
    SharedMemory first = {};
    ASSERT_EQ(createSharedMemory(&first, 5000, nullptr, name.c_str(), 0), 1);
    std::strcpy(text(first), "shared");
    SharedMemory second = garbage();
    ASSERT_EQ(openSharedMemory(&second, 5000, name.c_str()), 1);
    EXPECT_EQ(second.file, nullptr);
    EXPECT_NE(second.mapping, nullptr);
    EXPECT_EQ(second.size, 5000u);
    EXPECT_EQ(second.created, 0);
    EXPECT_EQ(second.lastError, 0u);
    ASSERT_NE(second.view, nullptr);
    EXPECT_STREQ(text(second), "shared");
    text(second)[4999] = 'x';
    EXPECT_EQ(text(first)[4999], 'x');
    EXPECT_EQ(closeSharedMemory(&second), 0);
    EXPECT_EQ(closeSharedMemory(&first), 1);
}

TEST_F(SharedMemoryTest, MissingOneIsNotOpened) {
    for (const std::string& missing : {name, std::string(), std::string(100000, 'n')}) {
        SharedMemory memory = garbage();
        SetLastError(0);
        EXPECT_EQ(openSharedMemory(&memory, 10, missing.c_str()), 0);
        EXPECT_NE(GetLastError(), 0u);
        EXPECT_EQ(memory.lastError, GetLastError());
        EXPECT_EQ(memory.mapping, nullptr);
        EXPECT_EQ(memory.view, nullptr);
        EXPECT_EQ(memory.size, 0u);
    }
    SharedMemory memory = garbage();
    EXPECT_EQ(openSharedMemory(&memory, 10, nullptr), 0);
    EXPECT_EQ(memory.size, 0u);
}

TEST_F(SharedMemoryTest, OneThatIsTooSmallIsNotOpenedAndNothingIsLeftOpen) {
    SharedMemory small = {};
    ASSERT_EQ(createSharedMemory(&small, 100, nullptr, name.c_str(), 0), 1);
    const int handles = vek::test::handlesOfThisProcess();
    SharedMemory large = garbage();
    EXPECT_EQ(openSharedMemory(&large, 1000000, name.c_str()), 0);
    EXPECT_NE(large.lastError, 0u);
    EXPECT_EQ(GetLastError(), large.lastError);
    EXPECT_EQ(large.mapping, nullptr);
    EXPECT_EQ(large.size, 0u);
    EXPECT_EQ(vek::test::handlesOfThisProcess(), handles);
    EXPECT_EQ(closeSharedMemory(&small), 1);
}

TEST_F(SharedMemoryTest, StandsInTheGlobalNamespace) {
    SharedMemory memory = {};
    ASSERT_EQ(createSharedMemory(&memory, 10, nullptr, name.c_str(), 0), 1);
    const OwnedHandle global(OpenFileMappingA(FILE_MAP_READ, FALSE, ("Global\\" + name).c_str()));
    EXPECT_NE(global.get(), nullptr);
    EXPECT_EQ(OpenFileMappingA(FILE_MAP_READ, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(closeSharedMemory(&memory), 1);
}

TEST_F(SharedMemoryTest, NameOf120BytesIsUsedAsItStands) {
    std::string longName = name;
    longName.resize(120, 'n');
    SharedMemory memory = {};
    ASSERT_EQ(createSharedMemory(&memory, 10, nullptr, longName.c_str(), 0), 1);
    EXPECT_NE(OwnedHandle(OpenFileMappingA(FILE_MAP_READ, FALSE, longName.c_str())).get(), nullptr);
    EXPECT_EQ(closeSharedMemory(&memory), 1);
}

TEST_F(SharedMemoryTest, WithoutANameIsOfThisProcessAlone) {
    for (const char* none : {static_cast<const char*>(nullptr), ""}) {
        SharedMemory first = {};
        SharedMemory second = {};
        ASSERT_EQ(createSharedMemory(&first, 10, nullptr, none, 0), 1);
        ASSERT_EQ(createSharedMemory(&second, 10, nullptr, none, 0), 1);
        EXPECT_EQ(second.created, 1);
        text(first)[0] = 'x';
        EXPECT_EQ(text(second)[0], 0);
        EXPECT_EQ(closeSharedMemory(&first), 1);
        EXPECT_EQ(closeSharedMemory(&second), 1);
    }
}

TEST_F(SharedMemoryTest, IsSharedWithAnotherProcess) {
    SharedMemory memory = {};
    ASSERT_EQ(createSharedMemory(&memory, 100, nullptr, name.c_str(), 1), 1);
    std::strcpy(text(memory), "from one process");
    std::uint32_t exitCode = 1;
    ASSERT_EQ(vek::os::runProcess(vek::test::childCommand("raise-text " + name + " 100").c_str(), 0,
                                  &exitCode),
              1);
    EXPECT_EQ(exitCode, 0u);
    EXPECT_STREQ(text(memory), "FROM ONE PROCESS");
    EXPECT_EQ(closeSharedMemory(&memory), 1);
}

TEST_F(SharedMemoryTest, MissingBackingFileIsCreatedAndSharedWithAnotherProcess) {
    SharedMemory memory = garbage();
    ASSERT_EQ(createSharedMemory(&memory, 16, path("file").c_str(), name.c_str(), 1), 1);
    EXPECT_NE(memory.file, INVALID_HANDLE_VALUE);
    EXPECT_NE(memory.file, nullptr);
    EXPECT_EQ(memory.created, 1);
    EXPECT_EQ(memory.lastError, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    ASSERT_NE(memory.view, nullptr);
    std::strcpy(text(memory), "backed");
    std::uint32_t exitCode = 1;
    ASSERT_EQ(vek::os::runProcess(vek::test::childCommand("raise-text " + name + " 16").c_str(), 0,
                                  &exitCode),
              1);
    EXPECT_EQ(exitCode, 0u);
    EXPECT_EQ(closeSharedMemory(&memory), 1);
    EXPECT_EQ(readFile("file"), std::string("BACKED\0\0\0\0\0\0\0\0\0\0", 16));
}

TEST_F(SharedMemoryTest, ExistingBackingFileIsUsedAndMadeAsLongAsTheMemory) {
    writeFile("file", "before");
    SharedMemory memory = garbage();
    ASSERT_EQ(createSharedMemory(&memory, 10, path("file").c_str(), name.c_str(), 0), 1);
    EXPECT_EQ(memory.created, 0);
    // That of the attempt to open the memory: the file was opened at once.
    EXPECT_EQ(memory.lastError, static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    ASSERT_NE(memory.view, nullptr);
    EXPECT_STREQ(text(memory), "before");
    EXPECT_EQ(closeSharedMemory(&memory), 1);
    EXPECT_EQ(readFile("file"), std::string("before\0\0\0\0", 10));
}

TEST_F(SharedMemoryTest, BackingFileMayBeReadAndWrittenByOthersMeanwhile) {
    SharedMemory memory = {};
    ASSERT_EQ(createSharedMemory(&memory, 10, path("file").c_str(), name.c_str(), 0), 1);
    const HANDLE other =
        CreateFileA(path("file").c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(other, INVALID_HANDLE_VALUE);
    CloseHandle(other);
    EXPECT_EQ(DeleteFileA(path("file").c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(closeSharedMemory(&memory), 1);
    EXPECT_NE(DeleteFileA(path("file").c_str()), 0) << "something was left open";
}

TEST_F(SharedMemoryTest, BackingFileThatCantBeOpenedIsAFailure) {
    const struct {
        std::string file;
        DWORD error;
    } rows[] = {{path("missing\\file"), ERROR_PATH_NOT_FOUND}, {path(), ERROR_ACCESS_DENIED}};
    for (const auto& row : rows) {
        SharedMemory memory = garbage();
        SetLastError(0);
        EXPECT_EQ(createSharedMemory(&memory, 10, row.file.c_str(), name.c_str(), 0), 0);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(memory.lastError, row.error);
        EXPECT_EQ(memory.file, INVALID_HANDLE_VALUE);
        EXPECT_EQ(memory.mapping, nullptr);
        EXPECT_EQ(memory.view, nullptr);
        EXPECT_EQ(memory.size, 0u);
        EXPECT_EQ(memory.created, 0);
    }
    SharedMemory memory = garbage();
    const std::string longFile = path(std::string(100000, 'n'));
    EXPECT_EQ(createSharedMemory(&memory, 10, longFile.c_str(), name.c_str(), 0), 0);
    EXPECT_EQ(memory.lastError, GetLastError());
}

TEST_F(SharedMemoryTest, NameOfAnotherKindIsAFailureAndTheFileIsClosed) {
    const OwnedHandle taken(CreateEventA(nullptr, FALSE, FALSE, ("Global\\" + name).c_str()));
    SharedMemory memory = garbage();
    SetLastError(0);
    EXPECT_EQ(createSharedMemory(&memory, 10, path("file").c_str(), name.c_str(), 0), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(memory.lastError, static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(memory.created, 0);
    EXPECT_EQ(memory.size, 0u);
    EXPECT_EQ(memory.view, nullptr);
    EXPECT_EQ(memory.mapping, nullptr);
    EXPECT_EQ(memory.file, INVALID_HANDLE_VALUE);
    EXPECT_NE(DeleteFileA(path("file").c_str()), 0) << "the file was left open";
}

TEST_F(SharedMemoryTest, SizeOfZeroIsAFailureUnlessAFileHasOne) {
    SharedMemory memory = garbage();
    EXPECT_EQ(createSharedMemory(&memory, 0, nullptr, name.c_str(), 0), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(memory.lastError, static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(memory.file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(memory.created, 0);
    writeFile("file", "content");
    ASSERT_EQ(createSharedMemory(&memory, 0, path("file").c_str(), name.c_str(), 0), 1);
    ASSERT_NE(memory.view, nullptr);
    EXPECT_EQ(std::string(text(memory), 7), "content");
    EXPECT_EQ(memory.size, 0u);
    EXPECT_EQ(closeSharedMemory(&memory), 1);
}

TEST_F(SharedMemoryTest, FlushedBytesStandInTheFile) {
    SharedMemory memory = {};
    ASSERT_EQ(createSharedMemory(&memory, 4, path("file").c_str(), nullptr, 0), 1);
    std::memcpy(memory.view, "done", 4);
    EXPECT_EQ(vek::os::flushView(memory.view, 4), 1);
    EXPECT_EQ(readFile("file"), "done");
    EXPECT_EQ(vek::os::flushView(memory.view, 0), 1);
    EXPECT_EQ(closeSharedMemory(&memory), 1);
}

TEST_F(SharedMemoryTest, FlushOfNoViewIsTheSystemsError) {
    SetLastError(0);
    EXPECT_EQ(vek::os::flushView(nullptr, 10), 0);
    EXPECT_NE(GetLastError(), 0u);
}

TEST_F(SharedMemoryTest, NullRecordMakesNoSystemCall) {
    SetLastError(12345);
    EXPECT_EQ(createSharedMemory(nullptr, 10, path("file").c_str(), name.c_str(), 1), 0);
    EXPECT_EQ(openSharedMemory(nullptr, 10, name.c_str()), 0);
    EXPECT_EQ(closeSharedMemory(nullptr), 0);
    EXPECT_EQ(GetLastError(), 12345u);
    EXPECT_EQ(GetFileAttributesA(path("file").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(SharedMemoryTest, LeavesNoHandleOpen) {
    const auto openAndClose = [this] {
        SharedMemory first = {};
        ASSERT_EQ(createSharedMemory(&first, 10, path("file").c_str(), name.c_str(), 0), 1);
        SharedMemory second = {};
        ASSERT_EQ(openSharedMemory(&second, 10, name.c_str()), 1);
        closeSharedMemory(&second);
        closeSharedMemory(&first);
    };
    // The system keeps what it opens for the first one.
    openAndClose();
    const int handles = vek::test::handlesOfThisProcess();
    for (int i = 0; i < 10; ++i) {
        openAndClose();
    }
    EXPECT_EQ(vek::test::handlesOfThisProcess(), handles);
}

// The number of `threads` concurrent creators whose record says that they created the memory.
int creatorsAmong(int threads, const char* fileName, const std::string& name) {
    const OwnedHandle go(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    std::vector<SharedMemory> memories(static_cast<std::size_t>(threads));
    std::vector<std::thread> creators;
    for (SharedMemory& memory : memories) {
        creators.emplace_back([&] {
            WaitForSingleObject(go.get(), INFINITE);
            createSharedMemory(&memory, 100, fileName, name.c_str(), 0);
        });
    }
    SetEvent(go.get());
    for (std::thread& creator : creators) {
        creator.join();
    }
    int created = 0;
    for (SharedMemory& memory : memories) {
        EXPECT_NE(memory.view, nullptr);
        created += memory.created;
        closeSharedMemory(&memory);
    }
    return created;
}

TEST_F(SharedMemoryTest, OfConcurrentCreatorsExactlyOneHasCreatedIt) {
    for (int round = 0; round < 100; ++round) {
        EXPECT_EQ(creatorsAmong(8, nullptr, name), 1) << round;
    }
}

// Wine may report to several creators that they made the file.
TEST_F(SharedMemoryTest, OfConcurrentCreatorsWithAFileOneHasCreatedIt) {
    for (int round = 0; round < 50; ++round) {
        const std::string file = path("file" + std::to_string(round));
        EXPECT_GE(creatorsAmong(8, file.c_str(), name), 1) << round;
        EXPECT_EQ(creatorsAmong(8, file.c_str(), name), 0) << "the file exists";
    }
}

}  // namespace
