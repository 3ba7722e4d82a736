#include "vek/auxiliary/line_parser.h"

#include <gtest/gtest.h>
#include <io.h>

#include "tests/vek/temporary_directory.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::aux::LineParser;
using Lines = std::vector<std::string>;

// Records the calls of a parse: "<start>", each line, "<end>".
class Recorder : public LineParser::LineCallback {
  public:
    bool processLine(const std::string& line) override {
        EXPECT_NE(parser, nullptr);
        calls.push_back(line);
        return calls.size() != stopAt;
    }
    void parseStart() override {
        EXPECT_NE(parser, nullptr);
        calls.push_back("<start>");
    }
    void parseEnd() override {
        EXPECT_NE(parser, nullptr);
        calls.push_back("<end>");
    }
    const LineParser* runningParser() const { return parser; }

    Lines calls;
    std::size_t stopAt = 0;
};

class LineParserTest : public vek::test::TemporaryDirectoryTest {
  protected:
    Lines parse(const std::string& content) {
        writeFile("x.txt", content);
        recorder.calls.clear();
        parser.parse(path("x.txt"), recorder);
        EXPECT_EQ(recorder.runningParser(), nullptr);
        return recorder.calls;
    }

    LineParser parser;
    Recorder recorder;
};

TEST_F(LineParserTest, EmptyFileDeliversNoLine) {
    EXPECT_EQ(parse(""), (Lines{"<start>", "<end>"}));
}

TEST_F(LineParserTest, DeliversEmptyLinesButNoEmptyRemainder) {
    EXPECT_EQ(parse("a\n\nb\n"), (Lines{"<start>", "a", "", "b", "<end>"}));
    EXPECT_EQ(parse("\n"), (Lines{"<start>", "", "<end>"}));
}

TEST_F(LineParserTest, DeliversALastLineWithoutALineEnd) {
    EXPECT_EQ(parse("a\nb"), (Lines{"<start>", "a", "b", "<end>"}));
    EXPECT_EQ(parse("a"), (Lines{"<start>", "a", "<end>"}));
}

TEST_F(LineParserTest, TakesBothKindsOfLineEnds) {
    EXPECT_EQ(parse("a\r\nb\nc\r\n"), (Lines{"<start>", "a", "b", "c", "<end>"}));
    EXPECT_EQ(parse("a\rb\n"), (Lines{"<start>", "a\rb", "<end>"}));
}

TEST_F(LineParserTest, DeliversLongLinesWhole) {
    const std::string line(1 << 20, 'x');
    EXPECT_EQ(parse(line + "\r\n" + line), (Lines{"<start>", line, line, "<end>"}));
}

TEST_F(LineParserTest, DeliversNulBytes) {
    EXPECT_EQ(parse(std::string("a\0b\n", 4)), (Lines{"<start>", std::string("a\0b", 3), "<end>"}));
}

TEST_F(LineParserTest, CtrlZEndsTheText) {
    EXPECT_EQ(parse("a\nb\x1A"
                    "c\n"),
              (Lines{"<start>", "a", "b", "<end>"}));
}

TEST_F(LineParserTest, CallbackCanEndTheParse) {
    recorder.stopAt = 2;
    EXPECT_EQ(parse("a\nb\nc\n"), (Lines{"<start>", "a", "<end>"}));
}

TEST_F(LineParserTest, ErrorsOfTheOpenPass) {
    EXPECT_THROW(parser.parse(path("none"), recorder), vek::NoSuchFileError);
    EXPECT_THROW(parser.parse(path(), recorder), vek::FileAccessError);
    EXPECT_EQ(recorder.calls, Lines{});
    EXPECT_EQ(recorder.runningParser(), nullptr);
}

TEST_F(LineParserTest, FileThatOthersHoldExclusivelyCantBeOpened) {
    writeFile("x.txt", "a\n");
    const HANDLE holder =
        CreateFileA(path("x.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    try {
        parser.parse(path("x.txt"), recorder);
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.osError().code(), static_cast<std::uint32_t>(ERROR_SHARING_VIOLATION));
    }
    CloseHandle(holder);
}

TEST_F(LineParserTest, FileIsClosedAfterwards) {
    parse("a\n");
    const HANDLE sole =
        CreateFileA(path("x.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(sole, INVALID_HANDLE_VALUE);
    CloseHandle(sole);
}

// Takes the handle under the parser away as the parse starts, so that its first read fails.
class HandleThief : public Recorder {
  public:
    HandleThief() {
        // The runtime hands out the lowest free descriptor, so the parser will get this one.
        descriptor = _dup(_fileno(stderr));
        _close(descriptor);
    }
    void parseStart() override {
        Recorder::parseStart();
        CloseHandle(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)));
    }

  private:
    int descriptor;
};

TEST_F(LineParserTest, FailedReadThrowsWithoutTheCallOfTheEnd) {
    writeFile("x.txt", "a\n");
    HandleThief thief;
    try {
        parser.parse(path("x.txt"), thief);
        ADD_FAILURE();
    } catch (const vek::FsError& error) {
        EXPECT_EQ(error.path(), path("x.txt"));
        EXPECT_EQ(error.osError().code(), static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
    }
    EXPECT_EQ(thief.calls, (Lines{"<start>"}));
    EXPECT_EQ(thief.runningParser(), &parser);
}

TEST_F(LineParserTest, ExceptionOfTheCallbackPasses) {
    struct Thrower : LineParser::LineCallback {
        bool processLine(const std::string&) override { throw vek::RuntimeError("no"); }
    } thrower;
    writeFile("x.txt", "a\n");
    EXPECT_THROW(parser.parse(path("x.txt"), thrower), vek::RuntimeError);
}

TEST_F(LineParserTest, ByteOrderMarkOfUtf8IsSkipped) {
    EXPECT_EQ(parse("\xEF\xBB\xBF"
                    "a=1\nb=2\n"),
              (Lines{"<start>", "a=1", "b=2", "<end>"}));
    EXPECT_EQ(parse("\xEF\xBB\xBF"), (Lines{"<start>", "<end>"}));
    EXPECT_EQ(parse("\xEF\xBB\xBF\n"), (Lines{"<start>", "", "<end>"}));
}

TEST_F(LineParserTest, MarkElsewhereAndPartOfOneAreText) {
    EXPECT_EQ(parse("a\n\xEF\xBB\xBF"
                    "b\n"),
              (Lines{"<start>", "a",
                     "\xEF\xBB\xBF"
                     "b",
                     "<end>"}));
    EXPECT_EQ(parse("\xEF\xBB"), (Lines{"<start>", "\xEF\xBB", "<end>"}));
    EXPECT_EQ(parse("\xFF"), (Lines{"<start>", "\xFF", "<end>"}));
    EXPECT_EQ(parse("a\n\xFF\xFE"), (Lines{"<start>", "a", "\xFF\xFE", "<end>"}));
}

TEST_F(LineParserTest, Utf16IsAnErrorThatSaysSo) {
    for (const std::string& content : {std::string("\xFF\xFE"),
                                       std::string("\xFF\xFE"
                                                   "a\0=\0b\0\n\0",
                                                   10),
                                       std::string("\xFE\xFF\0a\0=\0b\0\n", 10)}) {
        writeFile("x.txt", content);
        recorder.calls.clear();
        try {
            parser.parse(path("x.txt"), recorder);
            ADD_FAILURE();
        } catch (const vek::FsError& error) {
            EXPECT_EQ(std::string(error.what()),
                      "File system error at location: \"" + path("x.txt") +
                          "\": The file is in UTF-16. Save it in the system's ANSI code page.");
            EXPECT_EQ(error.osError().code(), 1113u);
            EXPECT_THROW(error.raise(), vek::aux::FileEncodingError);
        }
        EXPECT_EQ(recorder.calls, Lines{"<start>"});
    }
}

}  // namespace
