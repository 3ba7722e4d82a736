#include "vek/fs/copier.h"

#include <utility>

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/fs/open_files.h"
#include "tests/vek/fs/other_volume.h"
#include "vek/exception.h"

namespace {

using vek::fs::Access;
using vek::fs::Copier;
using vek::fs::File;
using vek::fs::StreamFile;
using vek::fs::Whence;
using vek::test::codeThrownBy;
using vek::test::isClosed;
using vek::test::textThrownBy;

class CopierTest : public vek::test::TwoVolumesTest {
  protected:
    StreamFile opened(const std::string& name, std::uint32_t access) const {
        StreamFile file;
        file.open(path(name), access);
        return file;
    }
};

std::string pattern(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += static_cast<char>(i % 251);
    }
    return text;
}

TEST_F(CopierTest, CopiesAnySizeFromPathToPath) {
    for (const std::size_t size : {0u, 1u, 511u, 512u, 513u, 1024u, 100000u}) {
        const std::string name = std::to_string(size);
        writeFile(name, pattern(size));
        Copier().copy(path(name), path(name + ".copy"));
        EXPECT_EQ(readFile(name + ".copy"), pattern(size)) << size;
        EXPECT_EQ(readFile(name), pattern(size)) << size;
        EXPECT_TRUE(isClosed(path(name)));
        EXPECT_TRUE(isClosed(path(name + ".copy")));
    }
}

TEST_F(CopierTest, EmptySourceMakesAnEmptyTarget) {
    writeFile("x", "");
    Copier().copy(path("x"), path("y"));
    EXPECT_TRUE(isClosed(path("y")));
    EXPECT_EQ(readFile("y"), "");
}

TEST_F(CopierTest, ExistingTargetIsAnErrorWithoutTheOption) {
    writeFile("x", "new");
    writeFile("y", "old");
    for (const std::uint32_t options :
         {0u, 1u, static_cast<std::uint32_t>(vek::fs::noFollowSource), 3u}) {
        EXPECT_EQ(codeThrownBy<vek::FsError>([&] { Copier(options).copy(path("x"), path("y")); }),
                  static_cast<std::uint32_t>(ERROR_FILE_EXISTS))
            << options;
        EXPECT_EQ(readFile("y"), "old");
        EXPECT_TRUE(isClosed(path("x")));
    }
}

TEST_F(CopierTest, ExistingTargetIsReplacedWithTheOption) {
    writeFile("x", "new");
    writeFile("y", "much longer old contents");
    Copier(vek::fs::overwriteTarget).copy(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "new");
    Copier(vek::fs::overwriteTarget).copy(path("x"), path("z"));
    EXPECT_EQ(readFile("z"), "new");
}

TEST_F(CopierTest, OptionsOneAndTwoChangeNothingElse) {
    writeFile("x", "text");
    Copier(vek::fs::noEffect | vek::fs::noFollowSource).copy(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "text");
}

TEST_F(CopierTest, TargetIsNotTouchedIfTheSourceCantBeOpened) {
    writeFile("y", "old");
    Copier copier(vek::fs::overwriteTarget);
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>([&] { copier.copy(path("x"), path("y")); }), 2u);
    EXPECT_EQ(codeThrownBy<vek::FileAccessError>([&] { copier.copy(path(), path("y")); }), 5u);
    StreamFile target = opened("y", Access::readWrite);
    EXPECT_THROW(copier.copy(path("x"), std::move(target)), vek::NoSuchFileError);
    EXPECT_TRUE(target.isOpen());
    EXPECT_EQ(readFile("y"), "old");
    target.close();
    // It can be used after a failure.
    writeFile("x", "new");
    copier.copy(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "new");
}

TEST_F(CopierTest, BothFileObjectsAreBorrowedAndCopiedWhole) {
    writeFile("x", "contents");
    writeFile("y", "much longer old contents");
    StreamFile source = opened("x", Access::read);
    StreamFile target = opened("y", Access::readWrite);
    source.seek(3, Whence::begin);
    target.seek(5, Whence::begin);
    Copier copier;
    copier.copy(source, target);
    EXPECT_EQ(readFile("y"), "contents");
    EXPECT_EQ(source.seek(0, Whence::current), 8u);
    EXPECT_EQ(target.seek(0, Whence::current), 8u);
    copier.copy(source, target);
    EXPECT_EQ(readFile("y"), "contents");
    source.close();
    target.close();
}

TEST_F(CopierTest, BorrowedFilesStayOpenAfterAFailure) {
    writeFile("x", "contents");
    writeFile("y", "old");
    StreamFile source = opened("x", Access::read);
    StreamFile target = opened("y", Access::read);  // can't be emptied
    EXPECT_THROW(Copier().copy(source, target), vek::OsError);
    EXPECT_NO_THROW(source.close());
    EXPECT_NO_THROW(target.close());
    EXPECT_EQ(readFile("y"), "old");
}

TEST_F(CopierTest, FileToPathGoesOnWhereTheFileStandsAndClosesIt) {
    writeFile("x", "contents");
    StreamFile source = opened("x", Access::read);
    source.seek(3, Whence::begin);
    Copier().copy(std::move(source), path("y"));
    EXPECT_EQ(readFile("y"), "tents");
    EXPECT_FALSE(source.isOpen());
    EXPECT_TRUE(isClosed(path("x")));
    EXPECT_TRUE(isClosed(path("y")));
}

TEST_F(CopierTest, FileToPathClosesTheFileAfterAFailureToo) {
    writeFile("x", "contents");
    writeFile("y", "old");
    EXPECT_EQ(
        codeThrownBy<vek::FsError>([&] { Copier().copy(opened("x", Access::read), path("y")); }),
        static_cast<std::uint32_t>(ERROR_FILE_EXISTS));
    EXPECT_TRUE(isClosed(path("x")));
}

TEST_F(CopierTest, PathToFileEmptiesTheTargetAndClosesIt) {
    writeFile("x", "contents");
    writeFile("y", "much longer old contents");
    StreamFile target = opened("y", Access::write);
    target.seek(7, Whence::begin);
    Copier().copy(path("x"), std::move(target));
    EXPECT_EQ(readFile("y"), "contents");
    EXPECT_FALSE(target.isOpen());
    EXPECT_TRUE(isClosed(path("x")));
    EXPECT_TRUE(isClosed(path("y")));
}

TEST_F(CopierTest, FailureHalfWayClosesBothSides) {
    EXPECT_THROW(Copier().copy(unreadableFile, path("y")), vek::OsError);
    EXPECT_TRUE(isClosed(path("y")));
    EXPECT_EQ(readFile("y"), "");
}

TEST_F(CopierTest, FailedWriteClosesTheSource) {
    writeFile("x", "contents");
    EXPECT_EQ(codeThrownBy<vek::OsError>(
                  [&] { Copier(vek::fs::overwriteTarget).copy(path("x"), fullFile); }),
              static_cast<std::uint32_t>(ERROR_DISK_FULL));
    EXPECT_TRUE(isClosed(path("x")));
}

TEST_F(CopierTest, SourceThatCantBeAskedIsAnOsError) {
    vek::fs::PipeEnds pipe;
    ASSERT_NE(CreatePipe(&pipe.readEnd, &pipe.writeEnd, nullptr, 0), 0);
    StreamFile reader;
    StreamFile writer;
    reader.takeReadEnd(pipe);
    writer.takeWriteEnd(pipe);
    EXPECT_THROW(Copier().copy(std::move(reader), path("y")), vek::OsError);
    EXPECT_THROW(writer.write("a", 1), vek::OsError);  // nobody reads any more
    EXPECT_THROW(readFile("y").at(0), std::out_of_range);
    EXPECT_EQ(GetFileAttributesA(path("y").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(codeThrownBy<vek::OsError>([] { Copier().copy(File(), File()); }),
              static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
}

TEST_F(CopierTest, WithGivenAttributesTheSourceIsNotAsked) {
    vek::fs::PipeEnds pipe;
    ASSERT_NE(CreatePipe(&pipe.readEnd, &pipe.writeEnd, nullptr, 0), 0);
    StreamFile reader;
    StreamFile writer;
    reader.takeReadEnd(pipe);
    writer.takeWriteEnd(pipe);
    writer.write("from a pipe", 11);
    writer.close();
    SECURITY_ATTRIBUTES* none = nullptr;
    Copier copier;
    copier.setAttributes(&none);
    copier.copy(std::move(reader), path("y"));
    EXPECT_EQ(readFile("y"), "from a pipe");
}

// A pipe of messages fails a read that has no room for the whole message.
TEST_F(CopierTest, BufferOfItsOwnHasRoomFor512Bytes) {
    for (const std::uint32_t size : {512u, 513u}) {
        const std::string name = "\\\\.\\pipe\\vek-copier-" + std::to_string(GetCurrentProcessId());
        File source;
        source.adopt(CreateNamedPipeA(name.c_str(), PIPE_ACCESS_INBOUND,
                                      PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 4096, 4096, 0,
                                      nullptr));
        ASSERT_TRUE(source.isOpen());
        StreamFile writer;
        writer.open(name, Access::write);
        const std::string message(size, 'm');
        ASSERT_EQ(writer.write(message.data(), size), size);
        writer.close();
        SECURITY_ATTRIBUTES* none = nullptr;
        Copier copier(vek::fs::overwriteTarget);
        copier.setAttributes(&none);
        if (size == 512) {
            copier.copy(std::move(source), path("y"));
            EXPECT_EQ(readFile("y"), message);
        } else {
            EXPECT_EQ(
                codeThrownBy<vek::OsError>([&] { copier.copy(std::move(source), path("y")); }),
                static_cast<std::uint32_t>(ERROR_MORE_DATA));
        }
    }
}

TEST_F(CopierTest, GivenAttributesAreThoseOfTheNewFile) {
    writeFile("x", "text");
    // What the system refuses shows that it was asked.
    unsigned char broken[64] = {99};
    SECURITY_ATTRIBUTES refused = {sizeof refused, broken, FALSE};
    SECURITY_ATTRIBUTES* given = &refused;
    Copier copier;
    copier.setAttributes(&given);
    EXPECT_THROW(copier.copy(path("x"), path("y")), vek::FsError);
    // They are looked up at each copy.
    SECURITY_ATTRIBUTES good = {sizeof good, nullptr, FALSE};
    given = &good;
    copier.copy(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "text");
    given = &refused;
    copier.setAttributes(nullptr);
    copier.copy(path("x"), path("z"));
    EXPECT_EQ(readFile("z"), "text");
}

TEST_F(CopierTest, UsesTheBufferThatItIsGiven) {
    writeFile("x", "0123456789");
    std::string buffer = "....";
    Copier copier;
    copier.setBuffer(buffer.data(), 3);
    copier.copy(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "0123456789");
    EXPECT_EQ(buffer, "978.");
}

TEST_F(CopierTest, SecondBufferIsIgnored) {
    writeFile("x", "0123");
    std::string first = "....";
    std::string second = "....";
    Copier copier;
    copier.setBuffer(first.data(), 4);
    copier.setBuffer(second.data(), 4);
    copier.copy(path("x"), path("y"));
    EXPECT_EQ(first, "0123");
    EXPECT_EQ(second, "....");
}

TEST_F(CopierTest, BufferIsIgnoredAfterTheFirstUse) {
    writeFile("x", "0123");
    std::string buffer = "....";
    Copier copier;
    copier.copy(path("x"), path("y"));
    copier.setBuffer(buffer.data(), 4);
    copier.copy(path("x"), path("z"));
    EXPECT_EQ(readFile("z"), "0123");
    EXPECT_EQ(buffer, "....");
}

TEST_F(CopierTest, NullBufferIsAUsageError) {
    writeFile("x", "0123");
    Copier copier(vek::fs::overwriteTarget);
    copier.setBuffer(nullptr, 4);
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { copier.copy(path("x"), path("y")); }),
              "Usage error: bad buffer passed to Copier instance");
    EXPECT_TRUE(isClosed(path("x")));
    EXPECT_TRUE(isClosed(path("y")));
    std::string buffer = "....";
    copier.setBuffer(buffer.data(), 4);
    copier.copy(path("x"), path("y"));
    EXPECT_EQ(buffer, "0123");
}

TEST_F(CopierTest, BufferWithoutASizeCountsAsNone) {
    writeFile("x", "0123");
    std::string buffer = "....";
    Copier copier;
    copier.setBuffer(buffer.data(), 0);
    copier.copy(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "0123");
    EXPECT_EQ(buffer, "....");
}

// A file whose handle the system refuses to close.
class Unclosable {
  public:
    explicit Unclosable(const std::string& path) {
        file.open(path, Access::read);
        handle = file.nativeHandle();
        protect(HANDLE_FLAG_PROTECT_FROM_CLOSE);
    }
    ~Unclosable() {
        protect(0);
        CloseHandle(handle);
    }

    StreamFile file;

  private:
    void protect(DWORD flag) { SetHandleInformation(handle, HANDLE_FLAG_PROTECT_FROM_CLOSE, flag); }

    HANDLE handle = nullptr;
};

TEST_F(CopierTest, FailedCloseAtTheEndThrowsAndTheTargetIsClosed) {
    writeFile("x", "contents");
    Unclosable source(path("x"));
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { Copier().copy(std::move(source.file), path("y")); }),
              static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(readFile("y"), "contents");
    EXPECT_TRUE(isClosed(path("y")));
}

TEST_F(CopierTest, FailedCloseIsDroppedWhileAnExceptionPasses) {
    writeFile("x", "contents");
    writeFile("y", "old");
    Unclosable source(path("x"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { Copier().copy(std::move(source.file), path("y")); }),
              static_cast<std::uint32_t>(ERROR_FILE_EXISTS));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(CopierTest, FailedCloseOfTheTargetIsDroppedToo) {
    writeFile("x", "contents");
    Unclosable target(path("x"));
    // A target that can't be emptied, as it is open for reading only.
    EXPECT_THROW(Copier().copy(path("x"), std::move(target.file)), vek::OsError);
    EXPECT_EQ(readFile("x"), "contents");
}

static_assert(!std::is_copy_constructible_v<Copier>);

}  // namespace
