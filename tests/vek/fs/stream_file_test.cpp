#include "vek/fs/stream_file.h"

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/fs/open_files.h"
#include "tests/vek/fs/peer.h"
#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"

namespace {

using vek::fs::Access;
using vek::fs::PipeEnds;
using vek::fs::StreamFile;
using vek::fs::Whence;
using vek::test::codeThrownBy;
using vek::test::textThrownBy;

constexpr std::uint32_t invalidHandle = ERROR_INVALID_HANDLE;

class StreamFileTest : public vek::test::TemporaryDirectoryTest {};

TEST_F(StreamFileTest, ReadsInPiecesToTheEnd) {
    writeFile("x", "abcde");
    StreamFile file;
    file.open(path("x"), Access::read);
    char buffer[3] = {};
    EXPECT_EQ(file.read(buffer, 3), 3u);
    EXPECT_EQ(std::string(buffer, 3), "abc");
    EXPECT_EQ(file.read(buffer, 3), 2u);
    EXPECT_EQ(file.read(buffer, 3), 0u);
}

TEST_F(StreamFileTest, WritesAndFlushes) {
    StreamFile file;
    file.open(path("x"), Access::write, vek::fs::mustBeNew);
    EXPECT_EQ(file.write("abc", 3), 3u);
    EXPECT_TRUE(file.flush());
    file.close();
    EXPECT_EQ(readFile("x"), "abc");
}

TEST_F(StreamFileTest, ConsoleCantBeFlushed) {
    EXPECT_EQ(vek::test::Peer("flush-console").exitCode(), 0);
}

TEST_F(StreamFileTest, ClosedStreamCantBeFlushed) {
    EXPECT_FALSE(StreamFile().flush());
}

TEST_F(StreamFileTest, OtherFailuresToFlushAreOsErrors) {
    writeFile("x", "");
    StreamFile file;
    file.open(path("x"), Access::read);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { file.flush(); }),
              static_cast<std::uint32_t>(ERROR_ACCESS_DENIED));
}

TEST_F(StreamFileTest, IsReadAndWrittenThroughItsInterfaces) {
    StreamFile file;
    file.open(path("x"), Access::readWrite, vek::fs::mustBeNew);
    vek::IInOut& both = file;
    vek::IOutput& output = both;
    vek::IInput& input = both;
    EXPECT_EQ(output.write("ab", 2), 2u);
    EXPECT_TRUE(output.flush());
    file.seek(0, Whence::begin);
    char buffer[2] = {};
    EXPECT_EQ(input.read(buffer, 2), 2u);
    EXPECT_EQ(std::string(buffer, 2), "ab");
}

// An output that holds nothing back.
struct PlainOutput final : vek::IOutput {
    std::uint32_t write(const void*, std::uint32_t size) override { return size; }
};

TEST(IOutput, FlushDoesNothingByDefault) {
    PlainOutput output;
    EXPECT_TRUE(output.flush());
}

TEST_F(StreamFileTest, SeeksFromBeginCurrentAndEnd) {
    writeFile("x", "0123456789");
    StreamFile file;
    file.open(path("x"), Access::read);
    char byte = 0;
    EXPECT_EQ(file.seek(4, Whence::begin), 4u);
    file.read(&byte, 1);
    EXPECT_EQ(byte, '4');
    EXPECT_EQ(file.seek(2, Whence::current), 7u);
    file.read(&byte, 1);
    EXPECT_EQ(byte, '7');
    EXPECT_EQ(file.seek(0, Whence::end), 10u);
    EXPECT_EQ(file.read(&byte, 1), 0u);
    EXPECT_EQ(file.seek(5, Whence::end), 15u);
    // Anything else counts from the beginning.
    EXPECT_EQ(file.seek(3, 3), 3u);
    EXPECT_EQ(file.seek(1, 0xFFFFFFFF), 1u);
}

TEST_F(StreamFileTest, OffsetIsUnsignedAndThePositionCutTo32Bits) {
    writeFile("x", "0123456789");
    StreamFile file;
    file.open(path("x"), Access::read);
    EXPECT_EQ(file.seek(0xFFFFFFFF, Whence::begin), 0xFFFFFFFFu);
    EXPECT_EQ(file.seek(3, Whence::current), 2u);  // 4 GiB and 2 bytes
    char byte = 0;
    EXPECT_EQ(file.read(&byte, 1), 0u);
}

TEST_F(StreamFileTest, SeekFailsWithAnOsError) {
    EXPECT_EQ(codeThrownBy<vek::OsError>([] { StreamFile().seek(0, Whence::begin); }),
              invalidHandle);
}

TEST_F(StreamFileTest, ResizeCutsAndFillsUpAndKeepsThePosition) {
    writeFile("x", "0123456789");
    StreamFile file;
    file.open(path("x"), Access::readWrite);
    file.seek(4, Whence::begin);
    file.resize(6);
    EXPECT_EQ(readFile("x"), "012345");
    EXPECT_EQ(file.seek(0, Whence::current), 4u);
    file.resize(8);
    EXPECT_EQ(readFile("x"), std::string("012345\0\0", 8));
    file.resize(2);
    EXPECT_EQ(file.seek(0, Whence::current), 4u);
    file.resize(0);
    EXPECT_EQ(readFile("x"), "");
}

TEST_F(StreamFileTest, ResizeFailsWithAnOsError) {
    writeFile("x", "0123456789");
    StreamFile file;
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { file.resize(0); }), invalidHandle);
    file.open(path("x"), Access::read);
    EXPECT_THROW(file.resize(0), vek::OsError);
    file.open(path("x"), Access::readWrite);
    EXPECT_EQ(codeThrownBy<vek::OsError>([&] { file.resize(~std::uint64_t{0}); }),
              static_cast<std::uint32_t>(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(readFile("x"), "0123456789");
}

PipeEnds makePipe() {
    PipeEnds pipe;
    EXPECT_NE(CreatePipe(&pipe.readEnd, &pipe.writeEnd, nullptr, 0), 0);
    return pipe;
}

TEST_F(StreamFileTest, TakesOverBothEndsOfAPipe) {
    PipeEnds pipe = makePipe();
    StreamFile reader;
    StreamFile writer;
    reader.takeReadEnd(pipe);
    EXPECT_EQ(pipe.readEnd, INVALID_HANDLE_VALUE);
    EXPECT_NE(pipe.writeEnd, INVALID_HANDLE_VALUE);
    writer.takeWriteEnd(pipe);
    EXPECT_EQ(pipe.writeEnd, INVALID_HANDLE_VALUE);
    EXPECT_EQ(writer.write("abc", 3), 3u);
    char buffer[8] = {};
    EXPECT_EQ(reader.read(buffer, sizeof buffer), 3u);
    EXPECT_EQ(std::string(buffer, 3), "abc");
}

TEST_F(StreamFileTest, PipeWhoseWriterHasClosedIsAtItsEnd) {
    PipeEnds pipe = makePipe();
    StreamFile reader;
    StreamFile writer;
    reader.takeReadEnd(pipe);
    writer.takeWriteEnd(pipe);
    writer.write("a", 1);
    writer.close();
    char byte = 0;
    EXPECT_EQ(reader.read(&byte, 1), 1u);
    EXPECT_EQ(reader.read(&byte, 1), 0u);
    EXPECT_EQ(reader.read(&byte, 1), 0u);
}

TEST_F(StreamFileTest, WritingToAPipeWhoseReaderHasClosedFails) {
    PipeEnds pipe = makePipe();
    CloseHandle(pipe.readEnd);
    StreamFile writer;
    writer.takeWriteEnd(pipe);
    EXPECT_THROW(writer.write("a", 1), vek::OsError);
}

TEST_F(StreamFileTest, TakingAnEndClosesWhatIsOpen) {
    writeFile("x", "");
    StreamFile file;
    file.open(path("x"), Access::read);
    PipeEnds pipe = makePipe();
    EXPECT_FALSE(vek::test::isClosed(path("x")));
    file.takeReadEnd(pipe);
    EXPECT_TRUE(vek::test::isClosed(path("x")));
    file.takeWriteEnd(pipe);
}

TEST_F(StreamFileTest, EndThatIsTakenAlreadyIsRefused) {
    const std::string expected = "Usage error: bad pipe end passed";
    writeFile("x", "");
    StreamFile file;
    file.open(path("x"), Access::read);
    PipeEnds pipe;
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { file.takeReadEnd(pipe); }), expected);
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { file.takeWriteEnd(pipe); }), expected);
    EXPECT_TRUE(file.isOpen());
    pipe = makePipe();
    file.takeReadEnd(pipe);
    EXPECT_EQ(textThrownBy<vek::UsageError>([&] { file.takeReadEnd(pipe); }), expected);
    file.takeWriteEnd(pipe);
}

}  // namespace
