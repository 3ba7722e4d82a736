#include "vek/proc/pipe.h"

#include <utility>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"
#include "vek/exception.h"
#include "vek/fs/stream_file.h"

namespace {

using vek::proc::Pipe;

bool isOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != 0;
}

bool isInheritable(HANDLE handle) {
    DWORD flags = 0;
    EXPECT_NE(GetHandleInformation(handle, &flags), 0);
    return (flags & HANDLE_FLAG_INHERIT) != 0;
}

std::string reportOfEnd(bool readEndOpen, bool writeEndOpen) {
    testing::internal::CaptureStderr();
    {
        Pipe pipe;
        if (!readEndOpen) {
            pipe.closeReadEnd();
        }
        if (!writeEndOpen) {
            pipe.closeWriteEnd();
        }
    }
    return testing::internal::GetCapturedStderr();
}

TEST(Pipe, CarriesBytesBetweenTwoInheritableEnds) {
    Pipe pipe;
    EXPECT_TRUE(isInheritable(pipe.readEnd));
    EXPECT_TRUE(isInheritable(pipe.writeEnd));
    DWORD count = 0;
    EXPECT_NE(WriteFile(pipe.writeEnd, "abc", 3, &count, nullptr), 0);
    char buffer[8] = {};
    EXPECT_NE(ReadFile(pipe.readEnd, buffer, sizeof buffer, &count, nullptr), 0);
    EXPECT_EQ(std::string(buffer, count), "abc");
    pipe.close();
}

TEST(Pipe, HasABufferOf4096Bytes) {
    Pipe pipe;
    DWORD size = 0;
    EXPECT_NE(GetNamedPipeInfo(pipe.readEnd, nullptr, nullptr, &size, nullptr), 0);
    EXPECT_EQ(size, 4096u);
    pipe.close();
}

TEST(Pipe, TakesA4096ByteTextWithoutAReader) {
    Pipe pipe;
    const std::string text(4096, 'x');
    DWORD count = 0;
    EXPECT_NE(WriteFile(pipe.writeEnd, text.data(), 4096, &count, nullptr), 0);
    EXPECT_EQ(count, 4096u);
    pipe.close();
}

TEST(Pipe, KeepsAnEndFromBeingInherited) {
    Pipe pipe;
    pipe.keepReadEnd();
    EXPECT_FALSE(isInheritable(pipe.readEnd));
    EXPECT_TRUE(isInheritable(pipe.writeEnd));
    pipe.keepWriteEnd();
    EXPECT_FALSE(isInheritable(pipe.writeEnd));
    pipe.close();
}

TEST(Pipe, KeepingAClosedEndThrows) {
    Pipe pipe;
    pipe.close();
    EXPECT_THROW(pipe.keepReadEnd(), vek::OsError);
    EXPECT_THROW(pipe.keepWriteEnd(), vek::OsError);
}

TEST(Pipe, ClosesEachEndOnce) {
    Pipe pipe;
    const HANDLE readEnd = pipe.readEnd;
    const HANDLE writeEnd = pipe.writeEnd;
    pipe.closeReadEnd();
    EXPECT_EQ(pipe.readEnd, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(isOpen(readEnd));
    EXPECT_TRUE(isOpen(writeEnd));
    EXPECT_NO_THROW(pipe.closeReadEnd());
    pipe.closeWriteEnd();
    EXPECT_EQ(pipe.writeEnd, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(isOpen(writeEnd));
    EXPECT_NO_THROW(pipe.close());
}

// Closes both ends and replaces the handles by values that no handle ever has: Windows may reuse
// the old values at once.
void loseEnds(Pipe& pipe) {
    pipe.close();
    pipe.readEnd = ULongToHandle(0x7ffffff0);
    pipe.writeEnd = ULongToHandle(0x7ffffff4);
}

TEST(Pipe, EndThatCannotBeClosedIsMarkedInvalidAllTheSame) {
    Pipe pipe;
    loseEnds(pipe);
    try {
        pipe.closeReadEnd();
        ADD_FAILURE();
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    }
    EXPECT_EQ(pipe.readEnd, INVALID_HANDLE_VALUE);
    EXPECT_THROW(pipe.close(), vek::OsError);
    EXPECT_EQ(pipe.writeEnd, INVALID_HANDLE_VALUE);
}

TEST(Pipe, ClosesTheReadEndFirstAndKeepsTheOtherIfThatFails) {
    Pipe pipe;
    loseEnds(pipe);
    EXPECT_THROW(pipe.close(), vek::OsError);
    EXPECT_EQ(pipe.readEnd, INVALID_HANDLE_VALUE);
    EXPECT_EQ(pipe.writeEnd, ULongToHandle(0x7ffffff4));
    EXPECT_THROW(pipe.close(), vek::OsError);
    EXPECT_EQ(pipe.writeEnd, INVALID_HANDLE_VALUE);
}

TEST(Pipe, EndWithAnOpenEndIsReportedAndClosesIt) {
    const std::string report = "Usage error: One or both Pipe FDs weren't closed\n";
    // The first error text opens handles of the system's own.
    EXPECT_EQ(reportOfEnd(true, true), report);
    const std::size_t before = support::openHandles().size();
    EXPECT_EQ(reportOfEnd(true, true), report);
    EXPECT_EQ(reportOfEnd(true, false), report);
    EXPECT_EQ(reportOfEnd(false, true), report);
    EXPECT_EQ(reportOfEnd(false, false), "");
    EXPECT_EQ(support::openHandles().size(), before);
}

TEST(Pipe, EndOfAPipeWhoseEndsCannotBeClosedThrowsNothing) {
    testing::internal::CaptureStderr();
    {
        Pipe pipe;
        loseEnds(pipe);
    }
    const std::string failure = std::string(vek::OsError(ERROR_INVALID_HANDLE).what()) + "\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Usage error: One or both Pipe FDs weren't closed\n" + failure + failure);
}

TEST(Pipe, MovesBothEnds) {
    Pipe source;
    const HANDLE readEnd = source.readEnd;
    const HANDLE writeEnd = source.writeEnd;
    Pipe moved(std::move(source));
    EXPECT_EQ(source.readEnd, INVALID_HANDLE_VALUE);
    EXPECT_EQ(source.writeEnd, INVALID_HANDLE_VALUE);
    EXPECT_EQ(moved.readEnd, readEnd);
    EXPECT_EQ(moved.writeEnd, writeEnd);
    Pipe other;
    const HANDLE former = other.writeEnd;
    other = std::move(moved);
    EXPECT_FALSE(isOpen(former));
    EXPECT_EQ(moved.writeEnd, INVALID_HANDLE_VALUE);
    EXPECT_EQ(other.readEnd, readEnd);
    Pipe& same = other;
    other = std::move(same);
    EXPECT_EQ(other.writeEnd, writeEnd);
    EXPECT_TRUE(isOpen(writeEnd));
    other.close();
}

TEST(Pipe, StreamFilesTakeItsEndsOver) {
    vek::fs::StreamFile reader;
    vek::fs::StreamFile writer;
    {
        Pipe pipe;
        reader.takeReadEnd(pipe);
        writer.takeWriteEnd(pipe);
        EXPECT_THROW(reader.takeReadEnd(pipe), vek::UsageError);
    }
    EXPECT_EQ(writer.write("x", 1), 1u);
    writer.close();
    char byte = 0;
    EXPECT_EQ(reader.read(&byte, 1), 1u);
    EXPECT_EQ(reader.read(&byte, 1), 0u);
}

}  // namespace
