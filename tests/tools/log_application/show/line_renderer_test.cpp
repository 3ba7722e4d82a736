#include "tools/log_application/show/line_renderer.h"

#include <sstream>

#include <gtest/gtest.h>

#include "tests/tools/log_application/support/scripted_server.h"
#include "tests/tools/log_application/support/tool_run.h"

namespace {

using namespace log_application;
using namespace log_application_test;

// Messages of every kind that is hard to show.
std::vector<LogLine> samples() {
    std::vector<LogLine> lines;
    for (const std::string& telegram : {
             messageTelegram("started", 0, "INFO"),
             messageTelegram("two\nlines and a\ttab", 1, "ERR"),
             messageTelegram("\x1b[2J \"quoted\" C:\\temp", 2, "WARN", "lo\ngger"),
             messageTelegram("gr\xC3\xBC\xC3\x9F, gr\xFC\xDF, \x9B", 3, "DEBUG"),
             messageTelegram("a\x1Fpid=1", 4, "TRACE"),
             std::string("message:agent=demo\x1F"
                         "attr_keys=code|us\"er\x1F"
                         "attr_values=7|A\nnn\x1Fmsg=m\x1F"
                         "pid=4242\x1Fscope=INFO\x1Ftid=1\x1Fwhen=1700000000999"),
             std::string("message:"),
         }) {
        lines.push_back(*parseLogLine(telegram));
    }
    return lines;
}

std::string rendered(OutputKind kind, const std::string& format = "") {
    const LineRenderer renderer(kind, format, false);
    std::ostringstream stream;
    for (const LogLine& line : samples()) {
        renderer.write(stream, line);
    }
    return stream.str();
}

TEST(LineRenderer, TextIsAsTheGoldenFile) {
    // Every keyword but {date}, which is local time.
    EXPECT_EQ(rendered(OutputKind::text,
                       "{timestamp_s} {color_start}[{level}|{scope}] {pid}/{tid} "
                       "{category}={agent}{attrs}: {msg}{color_end}"),
              golden("samples.txt"));
}

TEST(LineRenderer, JsonIsAsTheGoldenFile) {
    EXPECT_EQ(rendered(OutputKind::json), golden("samples.jsonl"));
}

TEST(LineRenderer, RawIsTheBytesOfTheText) {
    EXPECT_EQ(rendered(OutputKind::raw),
              "started\ntwo\nlines and a\ttab\n\x1b[2J \"quoted\" C:\\temp\n"
              "gr\xC3\xBC\xC3\x9F, gr\xFC\xDF, \x9B\na\x1Fpid=1\nm\n\n");
}

TEST(LineRenderer, FormatsUnlessGivenTellDateAndForSeveralTheProcess) {
    const LogLine line = *parseLogLine(messageTelegram("started"));
    const auto shown = [&line](const char* format) {
        std::ostringstream stream;
        LineRenderer(OutputKind::text, format, false).write(stream, line);
        return stream.str();
    };
    const std::string one = shown(LineRenderer::formatForOne);
    const std::string several = shown(LineRenderer::formatForSeveral);
    // The date and time are those of here, so only their form is sure.
    ASSERT_EQ(one.size(), std::string("2023-11-14 22:13:20 [ INFO] demo: started\n").size());
    EXPECT_EQ(one.substr(19), " [ INFO] demo: started\n");
    EXPECT_EQ(several.substr(19), " 4242 [ INFO] demo: started\n");
}

TEST(LineRenderer, ATimeThatCannotBeFormattedIsShownAs0) {
    const auto shown = [](std::int64_t when) {
        LogLine line;
        line.when = when;
        std::ostringstream stream;
        LineRenderer(OutputKind::text, "{timestamp_s}", false).write(stream, line);
        // Must not end the program.
        LineRenderer(OutputKind::text, "{date}", false).write(stream, line);
        return stream.str().substr(0, stream.str().find('\n'));
    };
    EXPECT_EQ(shown(INT64_MAX), "0 s");
    EXPECT_EQ(shown(INT64_MIN), "0 s");
    // 9999-12-31 and 1601-01-01 may be another year where the clock is ahead or behind.
    EXPECT_EQ(shown(253'402'214'400'000), "0 s");
    EXPECT_EQ(shown(-11'644'387'200'001), "0 s");
    EXPECT_EQ(shown(253'402'214'399'999), "253402214399 s");
    EXPECT_EQ(shown(-11'644'387'200'000), "-11644387200 s");
}

}  // namespace
