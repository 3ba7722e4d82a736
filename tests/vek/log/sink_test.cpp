#include "vek/log/sink.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/log/sample_message.h"

namespace {

using namespace vek::log;
using vek::test::SampleAttrMessage;
using vek::test::SampleMessage;

// Writes lines into a text and records its destruction.
class LineSink : public Sink {
  public:
    explicit LineSink(const SinkConfig& settings, bool* destroyed = nullptr)
        : Sink(config), config(settings), toTell(destroyed) {}
    ~LineSink() override {
        if (toTell != nullptr) {
            *toTell = true;
        }
    }

    int type() const override { return sinkFile; }
    using Sink::store;
    void store(const Message& message) override {
        last = &message;
        render(lines, message, false);
        lines << '\n';
    }
    std::string id() const override { return "file#1"; }

    SinkConfig config;
    std::ostringstream lines;
    const Message* last = nullptr;

  private:
    bool* const toTell;
};

TEST(SinkConfig, StartsWithAllShownAllLevelsAndNotEnabled) {
    const SinkConfig config;
    EXPECT_FALSE(config.enabled);
    EXPECT_TRUE(config.print_pids);
    EXPECT_TRUE(config.print_tids);
    EXPECT_TRUE(config.print_time);
    EXPECT_EQ(config.max_level, INVALID);
    EXPECT_TRUE(config.format.empty());
}

TEST(SinkConfig, HasItsFieldsInOrder) {
    const SinkConfig config;
    const auto& [first, second, third, fourth, fifth, sixth] = config;
    EXPECT_EQ(&first, &config.enabled);
    EXPECT_EQ(&second, &config.print_pids);
    EXPECT_EQ(&third, &config.print_tids);
    EXPECT_EQ(&fourth, &config.print_time);
    EXPECT_EQ(&fifth, &config.max_level);
    EXPECT_EQ(&sixth, &config.format);
}

TEST(Sink, TypesHaveTheirNumbers) {
    EXPECT_EQ(sinkStdout, 0);
    EXPECT_EQ(sinkFile, 1);
    EXPECT_EQ(sinkNet, 2);
    EXPECT_EQ(sinkDebugger, 3);
}

TEST(Sink, TakesAttributedMessagesAsMessages) {
    LineSink sink((SinkConfig()));
    SampleAttrMessage message(WARN);
    message.attrs = {{"a", "1"}};
    static_cast<Sink&>(sink).store(static_cast<const AttrMessage&>(message));
    EXPECT_EQ(sink.last, &message);
    EXPECT_TRUE(sink.last->hasAttrs());
    EXPECT_NE(sink.lines.str().find("tolmarhlp (a = 1): text\n"), std::string::npos);
}

TEST(Sink, AcceptsLevelsUpToItsOwn) {
    for (int max = OFF; max <= INVALID; ++max) {
        SinkConfig config;
        config.max_level = static_cast<Level>(max);
        const LineSink sink(config);
        for (int level = OFF; level <= INVALID; ++level) {
            EXPECT_EQ(sink.accepts(static_cast<Level>(level)), level <= max) << level << max;
        }
    }
}

TEST(Sink, GivesItsOwnSettings) {
    LineSink sink((SinkConfig()));
    EXPECT_EQ(&sink.getConfig(), &sink.config);
    sink.config.enabled = true;
    EXPECT_TRUE(sink.getConfig().enabled);
}

TEST(Sink, MayNameItsSettingsByPointer) {
    class PointedSink : public Sink {
      public:
        PointedSink() : Sink(&config) {}
        int type() const override { return sinkStdout; }
        using Sink::store;
        void store(const Message& /*message*/) override {}
        std::string id() const override { return "pointed"; }

        SinkConfig config;
    };
    const PointedSink sink;
    EXPECT_EQ(&sink.getConfig(), &sink.config);
}

TEST(Sink, IsDestroyedThroughItsBase) {
    bool destroyed = false;
    const Sink* const sink = new LineSink(SinkConfig(), &destroyed);
    delete sink;
    EXPECT_TRUE(destroyed);
}

// The line of a sink with these settings for one and the same message.
std::string lineOf(bool flags, const std::vector<FormatToken>& format) {
    LineSink sink(SinkConfig{true, flags, flags, flags, INVALID, format});
    sink.store(SampleMessage(WARN));
    return sink.lines.str();
}

TEST(Sink, RendersTheDefaultLayoutWithoutAFormat) {
    EXPECT_EQ(lineOf(false, {}), "[ WARN] tolmarhlp: text\n");
    const std::string all = lineOf(true, {});
    EXPECT_TRUE(all.starts_with("PID=4000000001 | TID=4294967295 | ")) << all;
    EXPECT_TRUE(all.ends_with(" | [ WARN] tolmarhlp: text\n")) << all;
}

TEST(Sink, EachFlagReachesTheDefaultLayout) {
    const SampleMessage message(WARN);
    const struct {
        SinkConfig config;
        const char* start;
    } rows[] = {
        {{true, true, false, false, INVALID, {}}, "PID=4000000001 | [ WARN]"},
        {{true, false, true, false, INVALID, {}}, "TID=4294967295 | [ WARN]"},
    };
    for (const auto& row : rows) {
        LineSink sink(row.config);
        sink.store(message);
        EXPECT_TRUE(sink.lines.str().starts_with(row.start)) << sink.lines.str();
    }
    LineSink withTime({true, false, false, true, INVALID, {}});
    withTime.store(message);
    EXPECT_EQ(withTime.lines.str().find("ID="), std::string::npos);
    EXPECT_NE(withTime.lines.str().find(" | [ WARN]"), std::string::npos);
}

TEST(Sink, RendersItsFormatWhateverTheFlags) {
    for (const bool flags : {false, true}) {
        EXPECT_EQ(lineOf(flags, compileFormat("{msg} of {agent}")), "text of tolmarhlp\n");
    }
}

TEST(Sink, EmptyFormatRendersEmptyLinesAndNotTheDefaultLayout) {
    EXPECT_EQ(lineOf(true, compileFormat("")), "\n");
}

TEST(Sink, ColorKeywordsOfAFormatRenderNothing) {
    EXPECT_EQ(lineOf(true, compileFormat("{color_start}{msg}{color_end}")), "text\n");
}

}  // namespace
