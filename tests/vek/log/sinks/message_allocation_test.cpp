// What rendering takes from the heap. A program of its own, since it counts every allocation.
#include <climits>
#include <cstddef>
#include <cstdint>
#include <new>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/counted_memory.h"
#include "tests/vek/log/sample_message.h"
#include "tests/vek/log/sinks/debugger_output.h"
#include "vek/base/windows.h"
#include "vek/log/message.h"
#include "vek/log/sinks/debugger_sink.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"
#include "vek/time/date_time.h"

namespace {

using namespace vek::log;
using support::allocationsOf;
using vek::test::DebuggerOutput;
using vek::test::SampleAttrMessage;
using vek::test::SampleMessage;

// A stream that needs no memory of its own.
class FixedBuffer : public std::streambuf {
  public:
    FixedBuffer() { setp(space, space + sizeof space); }
    std::string text() const { return std::string(pbase(), pptr()); }

  private:
    char space[4096];
};

class Allocations : public testing::Test {
  protected:
    Allocations() {
        message.attrs = {{"a key that is longer than a short text", std::string(100, 'v')},
                         {"b", "2"}};
        message.text = std::string(300, 't');
    }

    int ofFormat(const std::string& format) {
        const std::vector<FormatToken> tokens = compileFormat(format);
        return allocationsOf([&] { message.printFormatted(stream, tokens, true); });
    }

    // Those of turning a time into text, however often the library has to.
    static int ofTime(const char* pattern) {
        return allocationsOf([&] {
            vek::time::DateTime time;
            time.setLocalFromSeconds(1);
            time.format(pattern);
        });
    }

    SampleAttrMessage message{DEBUG};
    FixedBuffer buffer;
    std::ostream stream{&buffer};
};

TEST_F(Allocations, AreCounted) {
    EXPECT_EQ(allocationsOf([] {
                  // Seen by others, so that the compiler can't leave it out.
                  int* volatile one = new int;
                  delete one;
              }),
              1);
    EXPECT_EQ(allocationsOf([] { const std::string text(100, 'x'); }), 1);
}

TEST_F(Allocations, CompiledFormatNeedsNone) {
    EXPECT_EQ(ofFormat("a literal that is longer than a short text {level} {scope} {category} "
                       "{agent} {msg} {pid} {tid} {timestamp_s}{attrs} {color_start}{color_end}"),
              0);
    EXPECT_NE(buffer.text().find("b = 2"), std::string::npos);
}

TEST_F(Allocations, DateNeedsThoseOfItsTextOnceForASecond) {
    message.timestamp += 86400000;  // no test has printed this second yet
    EXPECT_EQ(ofFormat("{date}"), ofTime("%Y-%m-%d %H:%M:%S"));
    EXPECT_LE(ofTime("%Y-%m-%d %H:%M:%S"), 1);
    EXPECT_EQ(ofFormat("{level}{date}{msg}{attrs}{date}"), 0);
}

TEST_F(Allocations, DefaultLayoutNeedsThoseOfItsTimeOnceForASecond) {
    message.timestamp += 86400000;  // no test has printed this second yet
    EXPECT_EQ(allocationsOf([&] { message.printPlain(stream, true, true, false, true); }), 0);
    EXPECT_EQ(allocationsOf([&] { message.printPlain(stream, true, true, true, true); }),
              ofTime("%c"));
    EXPECT_EQ(allocationsOf([&] { message.printPlain(stream, true, true, true, true); }), 0);
    EXPECT_LE(ofTime("%c"), 1);
}

TEST_F(Allocations, FileSinkNeedsNoneForALineWithoutATime) {
    char directory[MAX_PATH] = {};
    char name[MAX_PATH] = {};
    GetTempPathA(sizeof directory, directory);
    ASSERT_NE(GetTempFileNameA(directory, "vek", 0, name), 0);
    {
        FileSinkConfig config(name);
        config.enabled = true;
        config.rotate = true;
        config.compress_archives = false;
        config.format = compileFormat("{level} {category} {msg} {pid} {tid} {timestamp_s}{attrs}");
        FileSink sink(config);
        EXPECT_EQ(allocationsOf([&] {
                      for (int i = 0; i < 250; ++i) {
                          sink.store(message);
                      }
                  }),
                  0);
        EXPECT_TRUE(sink.isGood());
    }
    EXPECT_NE(DeleteFileA(name), 0);
}

TEST_F(Allocations, MemoryThatRunsOutCostsTheDebuggerSinkNoLaterMessage) {
    const DebuggerOutput debugger;
    DebuggerSink sink({true, false, false, false, INVALID, compileFormat("{msg}")});
    const SampleMessage large(INFO, std::string(100000, 'x'));
    try {
        const support::MemoryLimit limit(INT_MAX, SIZE_MAX, 50000);
        sink.store(large);
    } catch (const std::bad_alloc&) {
        // The stream keeps its own lack of memory to itself; that of the copy comes out.
    }
    const std::size_t before = debugger.texts().size();
    sink.store(SampleMessage(INFO, "later"));
    EXPECT_TRUE(before == 0 || debugger.texts().front() != large.text + "\n") << "not too large";
    ASSERT_EQ(debugger.texts().size(), before + 1);
    EXPECT_EQ(debugger.texts().back(), "later\n");
}

// The time's text needs memory too, and its lack comes out of the middle of the line.
TEST_F(Allocations, MemoryThatRunsOutInsideALineCostsTheDebuggerSinkNoLaterMessage) {
    const DebuggerOutput debugger;
    DebuggerSink sink({true, false, false, false, INVALID, compileFormat("{msg}{date}")});
    SampleMessage large(INFO, std::string(100000, 'x'));
    large.timestamp += 2 * 86400000;  // no test has printed this second yet
    {
        const support::MemoryLimit limit(INT_MAX, SIZE_MAX, 10);
        EXPECT_THROW(sink.store(large), std::bad_alloc);
    }
    sink.store(SampleMessage(INFO, "later"));
    ASSERT_EQ(debugger.texts().size(), 1u);
    EXPECT_EQ(debugger.texts().back().rfind("later", 0), 0u);
}

}  // namespace
