#include "vek/fs/append_buffer.h"

#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/idle_child.h"
#include "tests/vek/fs/open_files.h"
#include "tests/vek/fs/other_volume.h"
#include "vek/base/windows.h"

namespace {

using vek::fs::AppendBuffer;
using vek::test::isClosed;

class AppendBufferTest : public vek::test::TwoVolumesTest {
  protected:
    std::streamoff position() { return stream.tellp(); }

    AppendBuffer buffer;
    std::ostream stream{&buffer};
};

TEST_F(AppendBufferTest, MakesAMissingFile) {
    EXPECT_TRUE(buffer.open(path("x")));
    EXPECT_TRUE(buffer.isOpen());
    EXPECT_EQ(readFile("x"), "");
    EXPECT_FALSE(isClosed(path("x")));
}

TEST_F(AppendBufferTest, AppendsToWhatIsThere) {
    writeFile("x", "before\n");
    ASSERT_TRUE(buffer.open(path("x")));
    stream << "behind" << std::flush;
    EXPECT_EQ(readFile("x"), "before\nbehind");
}

TEST_F(AppendBufferTest, HoldsTextBackUntilTheFlush) {
    ASSERT_TRUE(buffer.open(path("x")));
    stream << "a "
           << "line";
    EXPECT_EQ(readFile("x"), "");
    stream.flush();
    EXPECT_EQ(readFile("x"), "a line");
    EXPECT_TRUE(stream.good());
}

TEST_F(AppendBufferTest, EachLineFeedBecomesALineEndOfTheSystem) {
    ASSERT_TRUE(buffer.open(path("x")));
    stream << "\na\n\nb\r\n" << '\n' << std::endl;
    EXPECT_EQ(readFile("x"), "\r\na\r\n\r\nb\r\r\n\r\n\r\n");
}

TEST_F(AppendBufferTest, TextBeyondItsRoomArrivesWholeAndInOrder) {
    ASSERT_TRUE(buffer.open(path("x")));
    std::string text;
    while (text.size() < 5 * AppendBuffer::capacity) {
        text += std::to_string(text.size()) + " ";
    }
    stream << text;
    EXPECT_FALSE(readFile("x").empty());
    stream << text.substr(0, AppendBuffer::capacity) << std::flush;
    EXPECT_TRUE(readFile("x") == text + text.substr(0, AppendBuffer::capacity));
}

TEST_F(AppendBufferTest, LineEndIsCutInTwoAtTheEndOfItsRoom) {
    ASSERT_TRUE(buffer.open(path("x")));
    const std::string text(AppendBuffer::capacity - 1, 'x');
    stream << text << '\n';
    EXPECT_TRUE(readFile("x") == text + "\r");
    stream.flush();
    EXPECT_TRUE(readFile("x") == text + "\r\n");
}

TEST_F(AppendBufferTest, PositionIsTheSizeOfTheFile) {
    writeFile("x", std::string(70000, 'x'));
    ASSERT_TRUE(buffer.open(path("x")));
    EXPECT_EQ(position(), 70000);
    stream << "four";
    EXPECT_EQ(position(), 70004);
    stream << std::endl;
    EXPECT_EQ(position(), 70006);
    // What others append counts from the next write on.
    AppendBuffer other;
    ASSERT_TRUE(other.open(path("x")));
    other.sputn("other", 5);
    other.pubsync();
    stream << "." << std::flush;
    EXPECT_EQ(position(), 70012);
    EXPECT_EQ(readFile("x").substr(70000), "four\r\nother.");
}

TEST_F(AppendBufferTest, PositionBeyond32BitsIsTold) {
    constexpr std::int64_t large = 5'000'000'000;
    const HANDLE file = CreateFileA(path("x").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    LARGE_INTEGER end;
    end.QuadPart = large;
    const bool made =
        SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0;
    CloseHandle(file);
    ASSERT_TRUE(made) << GetLastError();
    ASSERT_TRUE(buffer.open(path("x")));
    EXPECT_EQ(position(), large);
    stream << "x" << std::flush;
    EXPECT_EQ(position(), large + 1);
}

TEST_F(AppendBufferTest, NoOtherSeekIsProvidedFor) {
    writeFile("x", "text");
    ASSERT_TRUE(buffer.open(path("x")));
    EXPECT_EQ(std::streamoff(buffer.pubseekoff(1, std::ios_base::cur)), -1);
    EXPECT_EQ(std::streamoff(buffer.pubseekoff(0, std::ios_base::beg)), -1);
    EXPECT_EQ(std::streamoff(buffer.pubseekoff(0, std::ios_base::end)), -1);
    stream << "." << std::flush;
    EXPECT_EQ(readFile("x"), "text.");
}

TEST_F(AppendBufferTest, OthersMayReadWriteRenameAndDelete) {
    ASSERT_TRUE(buffer.open(path("x")));
    stream << "1" << std::flush;
    EXPECT_EQ(readFile("x"), "1");
    EXPECT_NE(MoveFileA(path("x").c_str(), path("y").c_str()), 0) << GetLastError();
    stream << "2" << std::flush;
    EXPECT_EQ(readFile("y"), "12");
    EXPECT_NE(DeleteFileA(path("y").c_str()), 0) << GetLastError();
    stream << "3" << std::flush;
    EXPECT_TRUE(stream.good());
}

TEST_F(AppendBufferTest, ChildrenDoNotInheritTheFile) {
    ASSERT_TRUE(buffer.open(path("x")));
    const support::IdleChild child;
    EXPECT_TRUE(buffer.close());
    EXPECT_TRUE(isClosed(path("x")));
    EXPECT_TRUE(child.lives());
}

TEST_F(AppendBufferTest, FileThatCannotBeOpenedIsToldByTheResult) {
    EXPECT_FALSE(buffer.open(path()));
    EXPECT_FALSE(buffer.open(path("no\\x")));
    EXPECT_FALSE(buffer.open(path("<x>")));
    EXPECT_FALSE(buffer.open(""));
    EXPECT_FALSE(buffer.open(path(std::string("x\0y", 3))));
    EXPECT_NE(GetFileAttributesA(path().c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesA(path("x").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(buffer.isOpen());
}

TEST_F(AppendBufferTest, OpeningAnewClosesWhatIsOpen) {
    ASSERT_TRUE(buffer.open(path("x")));
    stream << "held back";
    ASSERT_TRUE(buffer.open(path("y")));
    EXPECT_TRUE(isClosed(path("x")));
    EXPECT_EQ(readFile("x"), "held back");
    stream << "y" << std::flush;
    EXPECT_EQ(readFile("y"), "y");
    EXPECT_FALSE(buffer.open(path()));
    EXPECT_TRUE(isClosed(path("y")));
}

TEST_F(AppendBufferTest, ClosingWritesWhatIsHeldBack) {
    ASSERT_TRUE(buffer.open(path("x")));
    stream << "a";
    EXPECT_TRUE(buffer.close());
    EXPECT_FALSE(buffer.isOpen());
    EXPECT_TRUE(isClosed(path("x")));
    EXPECT_EQ(readFile("x"), "a");
    EXPECT_FALSE(buffer.close()) << "nothing is open";
    {
        AppendBuffer other;
        ASSERT_TRUE(other.open(path("x")));
        other.sputn("b", 1);
    }
    EXPECT_TRUE(isClosed(path("x")));
    EXPECT_EQ(readFile("x"), "ab");
}

TEST_F(AppendBufferTest, ClosedBufferSetsTheBadFlagAtTheFirstWrite) {
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(position(), -1);
    stream.clear();
    stream.write("x", 1);
    EXPECT_TRUE(stream.bad());
    stream.clear();
    stream.put('x');
    EXPECT_TRUE(stream.bad());
    stream.clear();
    stream.flush();
    EXPECT_TRUE(stream.bad());
}

TEST_F(AppendBufferTest, FullDiskSetsTheBadFlagAtTheFlush) {
    ASSERT_TRUE(buffer.open(fullFile));
    stream << "x";
    EXPECT_TRUE(stream.good());
    stream.flush();
    EXPECT_TRUE(stream.bad());
    EXPECT_TRUE(buffer.close()) << "what couldn't be written is tried a second time";
    ASSERT_TRUE(buffer.open(fullFile));
    stream.clear();
    stream << "x";
    EXPECT_FALSE(buffer.close());
    EXPECT_FALSE(buffer.isOpen());
}

TEST_F(AppendBufferTest, FullDiskStopsALongWriteHalfWay) {
    ASSERT_TRUE(buffer.open(fullFile));
    const std::string text(3 * AppendBuffer::capacity, 'x');
    EXPECT_EQ(buffer.sputn(text.data(), static_cast<std::streamsize>(text.size())), 0);
    stream << "text" << text;
    EXPECT_TRUE(stream.bad());
}

}  // namespace
