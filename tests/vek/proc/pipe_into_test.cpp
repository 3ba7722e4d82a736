#include "tests/support/open_handles.h"
#include "tests/vek/proc/own_streams.h"
#include "tests/vek/proc/proc_test.h"
#include "tests/vek/proc/temporary_file.h"
#include "vek/fs/null_device.h"

namespace {

using vek::OsError;
using vek::UsageError;
using vek::proc::Program;
using vek::test::NamedEvent;
using vek::test::TemporaryFile;

class PipeInto : public vek::test::ProcTest {
  protected:
    Program first;
    Program second;
    TemporaryFile file;
};

TEST_F(PipeInto, OutputOfTheOneIsTheInputOfTheOther) {
    const std::string text(20000, 'x');
    prepare(first, {"say", text, "", "0"});
    prepare(second, {"save", file.path});
    EXPECT_TRUE(first.pipeInto(second));
    EXPECT_EQ(file.contents(), text);
    EXPECT_TRUE(first.getStatus().succeeded());
    EXPECT_TRUE(second.getStatus().succeeded());
}

TEST_F(PipeInto, FailureOfEitherIsAFailureAndBothAreFinished) {
    prepare(first, {"say", "text", "", "3"});
    prepare(second, {"save", file.path});
    EXPECT_FALSE(first.pipeInto(second));
    EXPECT_EQ(first.getStatus().code, 3u);
    EXPECT_TRUE(second.getStatus().succeeded());
    EXPECT_EQ(file.contents(), "text");
    prepare(first, {"say", "", "", "0"});
    prepare(second, {"exit", "4"});
    EXPECT_FALSE(first.pipeInto(second));
    EXPECT_TRUE(first.getStatus().succeeded());
    EXPECT_EQ(second.getStatus().code, 4u);
}

TEST_F(PipeInto, WriterNoticesThatTheReaderHasGone) {
    // Only the reader has the other end: otherwise the writer would block forever.
    prepare(first, {"say", std::string(20000, 'x'), "", "0"});
    prepare(second, {"exit", "0"});
    EXPECT_FALSE(first.pipeInto(second));
    EXPECT_EQ(first.getStatus().code, 97u);
}

TEST_F(PipeInto, LeavesNoHandleAndNoStaleStream) {
    prepare(first, {"say", "text", "", "0"});
    prepare(second, {"save", file.path});
    first.pipeInto(second);
    const std::size_t before = support::openHandles().size();
    EXPECT_TRUE(first.pipeInto(second));
    EXPECT_EQ(support::openHandles().size(), before);
    // KeepStdin now means this process's own input: the pipe's handle was forgotten.
    const TemporaryFile result;
    prepare(second, {"streams", result.path});
    const vek::test::OwnStreams streams(vek::fs::nullOutput()->nativeHandle());
    second.start(Program::KeepStdin);
    EXPECT_TRUE(second.finish());
    EXPECT_EQ(result.contents(), "2 2 2 ");
}

TEST_F(PipeInto, ReaderThatCannotBeStartedLeavesTheWriterToTheCaller) {
    prepare(first, {"say", "text", "", "2"});
    second.setArguments({"C:\\no\\such\\program.exe"}, true);
    EXPECT_THROW(first.pipeInto(second), OsError);
    std::string text;
    first.readOutput(text, 10);
    EXPECT_EQ(text, "text");
    EXPECT_FALSE(first.finish());
    EXPECT_EQ(first.getStatus().code, 2u);
}

TEST_F(PipeInto, ItselfIsAnError) {
    prepare(first, {"exit", "0"});
    EXPECT_THROW(first.pipeInto(first), UsageError);
    EXPECT_TRUE(first.finish());
}

}  // namespace
