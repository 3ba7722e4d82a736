// Tests of tools/log_application/web/event_stream.cpp: what WebTest can't bring about at will.
#include "tools/log_application/web/event_stream.h"

#include <functional>

#include "tests/tools/log_application/support/tool_test.h"
#include "tools/log_application/program/deep_stack.h"

namespace {

using namespace log_application_test;
using log_application::Arrival;
using log_application::EventStream;
using log_application::LineStore;
using log_application::MergedItem;

class EventStreamTest : public ToolTest {
  protected:
    ~EventStreamTest() override { stop.request(); }

    void addLine(const std::string& text) {
        log_application::LogLine line;
        line.text = text;
        store.add({MergedItem{{Arrival::message, 1, ""}, line}});
    }

    // What a browser gets up to and with `last`, or its first 30 events. `seen` is called for each
    // event.
    std::string eventsUntil(
        const std::string& last, const std::string& include = "", const std::string& after = "",
        const std::function<void(std::string_view)>& seen = [](std::string_view) {}) {
        log_application::WebRequest request;
        request.parameters.emplace("after", after);
        if (!include.empty()) {
            request.parameters.emplace("include", include);
        }
        std::string events;
        int count = 0;
        log_application::runOnDeepStack([&] {
            EventStream(log_application::WebSources{store, rates, processes, stop})
                .run(request, [&](std::string_view event) {
                    events += event;
                    seen(event);
                    return !holds(events, last) && ++count < 30;
                });
        });
        return events;
    }

    // Nobody answers there.
    static log_application::Selection nobody() {
        log_application::Selection selection;
        selection.connect = {{"127.0.0.1", 1}};
        return selection;
    }

    const log_application::Selection selection = nobody();
    log_application::StopSignal stop;
    log_application::LineQueue queue{10};
    LineStore store{10};
    log_application::MessageRates rates;
    log_application::WatchedProcesses processes{selection, stop, queue};
};

TEST_F(EventStreamTest, SaysHowManyLinesWereDroppedOnTheWay) {
    addLine("before");
    store.add({MergedItem{{Arrival::dropped, 1, "", 4711}, std::nullopt}});
    addLine("after");
    const std::string events = eventsUntil("\"after\"");
    EXPECT_TRUE(holds(events, "[1,1,\"4711 lines were dropped")) << events;
    EXPECT_TRUE(holds(events, "\"before\"") && holds(events, "\"after\"")) << events;
}

TEST_F(EventStreamTest, AMessageThatCannotBeReadIsTold) {
    store.add({MergedItem{{Arrival::message, 1, "rubbish"}, std::nullopt}});
    const std::string events = eventsUntil("event: lines\n");
    EXPECT_TRUE(holds(events, "A message that can't be read was left out.")) << events;
}

TEST_F(EventStreamTest, SaysOnceThatASearchWasGivenUp) {
    addLine(std::string(1'000'000, 'x'));
    addLine("y");
    addLine("z");
    const std::string name = "event: undecided\n";
    const std::string events =
        eventsUntil("\"yy\"", "^(x|y)*$", "", [this, &name](std::string_view event) {
            if (event.starts_with(name)) {
                addLine("yy");
            }
        });
    EXPECT_TRUE(holds(events, name));
    EXPECT_EQ(events.find(name), events.rfind(name));
    EXPECT_TRUE(holds(events, "\"y\"") && holds(events, "\"yy\""));
    EXPECT_FALSE(holds(events, "\"z\"")) << "others are filtered as before";
}

TEST_F(EventStreamTest, LinesThatTheStoreHasRemovedAreCountedAsMissed) {
    for (int i = 0; i < 13; ++i) {
        addLine("line " + std::to_string(i));
    }
    const std::string events = eventsUntil("event: lines\n", "", "0");
    EXPECT_TRUE(holds(events, "event: missed\ndata: 2\n\n")) << events;
    EXPECT_FALSE(holds(events, "\"line 2\"")) << events;
    EXPECT_TRUE(holds(events, "\"line 3\"")) << events;
}

TEST_F(EventStreamTest, ANumberThatIsNoneIsIgnored) {
    addLine("line");
    for (const char* const after : {"99999999999999999999999", "-1", "x", "0x0"}) {
        EXPECT_TRUE(holds(eventsUntil("event: lines\n", "", after), "\"line\"")) << after;
    }
}

TEST_F(EventStreamTest, AnEarlierRunsNumberHidesNoNewLines) {
    addLine("old");
    bool isAdded = false;
    const std::string events = eventsUntil("\"new\"", "", "1000000", [&](std::string_view) {
        if (!isAdded) {
            isAdded = true;
            addLine("new");
        }
    });
    EXPECT_TRUE(holds(events, "\"new\"")) << events;
    EXPECT_FALSE(holds(events, "\"old\"")) << events;
}

}  // namespace
