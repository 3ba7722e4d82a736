// log_application web, on real processes; the browser's part is played by a socket.
#include <iostream>
#include <list>
#include <memory>
#include <sstream>
#include <thread>

#include "tests/support/files.h"
#include "tests/tools/log_application/support/burst.h"
#include "tests/tools/log_application/support/http_peer.h"
#include "tests/tools/log_application/support/tool_test.h"
#include "tools/log_application/commands/web_command.h"
#include "tools/log_application/connection/client.h"

namespace {

using namespace log_application_test;

// Settings with which the logger "a" logs.
constexpr const char* ticking = "default_level = \"INFO\";";

// The address that the program has printed, in its parts.
struct PageAddress {
    explicit PageAddress(const std::string& output) {
        const std::size_t colon = output.find("127.0.0.1:") + 10;
        const std::size_t slash = output.find('/', colon);
        port = static_cast<std::uint16_t>(std::stoi(output.substr(colon, slash - colon)));
        path = output.substr(slash, output.find_first_of("\r\n", slash) - slash);
    }

    std::string head(const std::string& method, const std::string& name) const {
        return method + " " + path + name + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
               "\r\nOrigin: http://127.0.0.1:" + std::to_string(port) + "\r\n";
    }
    std::string get(const std::string& name) const { return head("GET", name) + "\r\n"; }

    // Posts a form; returns the answer.
    std::string post(const std::string& name, const std::string& form) const {
        HttpPeer peer(port);
        peer.write(head("POST", name) +
                   "Connection: close\r\nContent-Type: application/x-www-form-urlencoded\r\n"
                   "Content-Length: " +
                   std::to_string(form.size()) + "\r\n\r\n" + form);
        return peer.readAll();
    }

    std::uint16_t port = 0;
    std::string path;  // with the token
};

PageAddress addressOf(const ToolRun& run) {
    EXPECT_TRUE(run.waitForOutput("/\n")) << run.errors();
    return PageAddress(run.output());
}

// The number of the process `name` in the events `text`.
std::string idOf(const std::string& text, const std::string& name) {
    const std::size_t end = text.find(",\"name\":\"" + name + "\"");
    EXPECT_NE(end, std::string::npos) << text;
    const std::size_t start = text.rfind(':', end) + 1;
    return text.substr(start, end - start);
}

std::string defaultLevelOf(const ServiceProcess& service) {
    return log_application::Client({"", 0, {{"127.0.0.1", service.port}}}, nullptr).defaultLevel();
}

class WebTest : public ToolTest {};

TEST_F(WebTest, PrintsAnAddressThatServesThePage) {
    const ToolRun run("web --connect 127.0.0.1:1");
    const PageAddress page = addressOf(run);
    EXPECT_EQ(page.path.size(), 34U);
    HttpPeer peer(page.port);
    peer.write(page.get(""));
    const std::string answer = peer.readUntil("</html>\n");
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer;
    EXPECT_TRUE(holds(answer, "Content-Type: text/html; charset=utf-8\r\n")) << answer;
    peer.write(page.get("nothing"));
    EXPECT_TRUE(peer.readUntil("\r\n\r\n").starts_with("HTTP/1.1 404 "));
}

TEST_F(WebTest, TakesTheGivenPort) {
    std::uint16_t port = 0;
    std::string path;
    {
        const ToolRun run("web --connect 127.0.0.1:1");
        const PageAddress page = addressOf(run);
        port = page.port;
        path = page.path;
    }
    const ToolRun run("web --connect 127.0.0.1:1 --port " + std::to_string(port));
    const PageAddress page = addressOf(run);
    EXPECT_EQ(page.port, port);
    EXPECT_NE(page.path, path) << "each run has a token of its own";
    const ToolResult second = runTool("web --connect 127.0.0.1:1 --port " + std::to_string(port));
    EXPECT_EQ(second.code, static_cast<DWORD>(exitLost));
    EXPECT_TRUE(holds(second.errors, "can't be listened on")) << second.errors;
}

TEST_F(WebTest, ShowsSeveralProcessesAndTheirMessages) {
    ServiceProcess one("idle", ownName("one"), ticking);
    ServiceProcess two("idle", ownName("two"), ticking);
    const ToolRun run("web");
    const PageAddress page = addressOf(run);
    HttpPeer peer(page.port);
    peer.write(page.get("events"));
    std::string text = peer.readUntil("\"name\":\"" + two.name + "\"");
    const std::string pid = std::to_string(two.process().processId());
    text += peer.readUntil("\"pid\":" + pid + ",\"tid\"");
    EXPECT_TRUE(holds(text, "\"pid\":" + pid + ",\"tid\"")) << text;
    EXPECT_TRUE(holds(text, "\"name\":\"" + one.name +
                                "\",\"pid\":" + std::to_string(one.process().processId())));
    EXPECT_TRUE(holds(text, "\"loggers\":[[\"a\",\"default\"],[\"b\",\"default\"]]")) << text;
    EXPECT_TRUE(holds(text, "\"level\":\"INFO\",\"logger\":\"a\"")) << text;
}

TEST_F(WebTest, FiltersAsTailDoes) {
    ServiceProcess service("idle", ownName("filtered"), "default_level = \"DEBUG\";");
    const ToolRun run("web " + service.connect());
    const PageAddress page = addressOf(run);
    HttpPeer details(page.port);
    details.write(page.get("events?include=%5Edetail"));
    const std::string found = details.readUntil("\"detail ");
    EXPECT_FALSE(holds(found, "\"tick ")) << found;
    HttpPeer graver(page.port);
    graver.write(page.get("events?level=INFO"));
    EXPECT_FALSE(holds(graver.readUntil("\"tick "), "\"detail "));
    HttpPeer refused(page.port);
    refused.write(page.get("events?include=("));
    EXPECT_TRUE(holds(refused.readUntil("\n\n"), "event: refused")) << "a broken expression";
    // A hidden process has no lines, but its state.
    HttpPeer hidden(page.port);
    const std::string name = "127.0.0.1%3A" + std::to_string(service.port);
    hidden.write(page.get("events?hide=" + name));
    hidden.readUntil("event: rates");
    EXPECT_FALSE(
        holds(hidden.readUntil("event: rates") + hidden.readUntil("event: rates"), "\"tick "));
}

TEST_F(WebTest, SetsALevelForATimeAndPutsItBack) {
    ServiceProcess service("idle", ownName("timed"), "default_level = \"INFO\";");
    const ToolRun run("web " + service.connect());
    const PageAddress page = addressOf(run);
    HttpPeer peer(page.port);
    peer.write(page.get("events"));
    const std::string id =
        idOf(peer.readUntil("\"state\":\"live\""), "127.0.0.1:" + std::to_string(service.port));
    EXPECT_TRUE(page.post("level", "process=" + id + "&level=DEBUG&seconds=3")
                    .starts_with("HTTP/1.1 200 "));
    EXPECT_TRUE(holds(peer.readUntil("\"timed\":[[null,"), "\"default\":\"DEBUG\""));
    EXPECT_EQ(defaultLevelOf(service), "DEBUG");
    const std::string text = peer.readUntil("\"timed\":[]");
    EXPECT_TRUE(text.ends_with("\"timed\":[]")) << "no time is left";
    EXPECT_TRUE(holds(text, "\"detail "));
    EXPECT_EQ(defaultLevelOf(service), "INFO");
}

TEST_F(WebTest, AFurtherChangeKeepsTheLevelFromBeforeTheFirst) {
    ServiceProcess service("idle", ownName("twice"), "default_level = \"INFO\";");
    const ToolRun run("web " + service.connect());
    const PageAddress page = addressOf(run);
    HttpPeer peer(page.port);
    peer.write(page.get("events"));
    const std::string id =
        idOf(peer.readUntil("\"state\":\"live\""), "127.0.0.1:" + std::to_string(service.port));
    const std::string process = "process=" + id;
    page.post("level", process + "&level=DEBUG&seconds=600");
    page.post("level", process + "&level=TRACE&seconds=600");
    EXPECT_EQ(defaultLevelOf(service), "TRACE");
    page.post("back", process);
    EXPECT_EQ(defaultLevelOf(service), "INFO");
    page.post("level", process + "&level=DEBUG&seconds=600");
    page.post("level", process + "&level=ERR");
    page.post("back", process);
    EXPECT_EQ(defaultLevelOf(service), "ERR") << "a change for good ends the time";
}

TEST_F(WebTest, SetsTheLevelOfALogger) {
    ServiceProcess service("idle", ownName("logger"));
    const ToolRun run("web " + service.connect());
    const PageAddress page = addressOf(run);
    HttpPeer peer(page.port);
    peer.write(page.get("events"));
    const std::string process = "process=" + idOf(peer.readUntil("\"state\":\"live\""),
                                                  "127.0.0.1:" + std::to_string(service.port));
    EXPECT_TRUE(page.post("level", process + "&logger=b&level=DEBUG").starts_with("HTTP/1.1 200 "));
    peer.readUntil("[\"b\",\"DEBUG\"]");
    EXPECT_TRUE(
        page.post("level", process + "&logger=b&level=DEFAULT").starts_with("HTTP/1.1 200 "));
    peer.readUntil("[\"b\",\"default\"]");
    for (const std::string& wrong :
         {process + "&logger=none&level=DEBUG", process + "&level=DEFAULT", process + "&level=LOUD",
          std::string("process=99&level=DEBUG"), std::string("process=x&level=DEBUG"),
          std::string("level=DEBUG"), process + "&level=DEBUG&seconds=86401",
          process + "&level=DEBUG&seconds="}) {
        EXPECT_TRUE(page.post("level", wrong).starts_with("HTTP/1.1 409 ")) << wrong;
    }
}

TEST_F(WebTest, PutsLevelsBackAtItsEnd) {
    ServiceProcess service("idle", ownName("end"), "default_level = \"INFO\";");
    log_application::Options options;
    options.command = log_application::Command::web;
    options.selection.connect = {{"127.0.0.1", service.port}};
    log_application::StopSignal stop;
    std::stringbuf printed;
    std::streambuf* const before = std::cout.rdbuf(&printed);
    log_application::ExitCode code = exitLost;
    std::thread command([&] { code = log_application::WebCommand(options, stop).run(); });
    EXPECT_TRUE(support::waitUntil([&] { return holds(printed.str(), "/\n"); }, 20'000));
    std::cout.rdbuf(before);
    const PageAddress page(printed.str());
    {
        HttpPeer peer(page.port);
        peer.write(page.get("events"));
        peer.readUntil("\"state\":\"live\"");
        page.post("level", "process=1&level=TRACE&seconds=600");
        EXPECT_EQ(defaultLevelOf(service), "TRACE");
    }
    stop.request();
    command.join();
    EXPECT_EQ(code, exitDone);
    EXPECT_EQ(defaultLevelOf(service), "INFO");
}

TEST_F(WebTest, AProcessThatEndsAndReturnsIsFollowedAgain) {
    const std::string name = ownName("again");
    auto service = std::make_unique<ServiceProcess>("idle", name, ticking);
    const ToolRun run("web --name " + name);
    const PageAddress page = addressOf(run);
    HttpPeer peer(page.port);
    peer.write(page.get("events"));
    peer.readUntil("\"tick ");
    service->kill();
    const std::string ending = peer.readUntil("\"state\":\"ended\"");
    EXPECT_TRUE(ending.ends_with("\"ended\"")) << ending;
    service = std::make_unique<ServiceProcess>("idle", name, ticking);
    const std::string pid = std::to_string(service->process().processId());
    const std::string text = peer.readUntil("\"pid\":" + pid + ",\"tid\"");
    EXPECT_FALSE(holds(text.substr(text.rfind("event: processes")), "\"state\":\"ended\"")) << text;
    EXPECT_TRUE(holds(text, "following " + name)) << text;
}

TEST_F(WebTest, ABrowserThatConnectsAgainGetsWhatItDoesNotHave) {
    ServiceProcess service("idle", ownName("resumed"), ticking);
    const ToolRun run("web " + service.connect());
    const PageAddress page = addressOf(run);
    HttpPeer first(page.port);
    first.write(page.get("events"));
    first.readUntil("[7,1,{");
    HttpPeer second(page.port);
    second.write(page.get("events?after=3"));
    EXPECT_TRUE(holds(second.readUntil("\"tick ").substr(0, 100'000), "[[4,1,{"));
    HttpPeer third(page.port);
    third.write(page.head("GET", "events?after=3") + "Last-Event-ID: 5\r\n\r\n");
    EXPECT_TRUE(holds(third.readUntil("\"tick "), "[[6,1,{"));
}

TEST_F(WebTest, TooManyStreamsAreRefused) {
    const ToolRun run("web --connect 127.0.0.1:1");
    const PageAddress page = addressOf(run);
    std::list<HttpPeer> peers;
    for (int i = 0; i < 6; ++i) {
        peers.emplace_back(page.port).write(page.get("events"));
        EXPECT_TRUE(holds(peers.back().readUntil("event: "), " 200 OK"));
    }
    HttpPeer further(page.port);
    further.write(page.get("events"));
    EXPECT_TRUE(holds(further.readUntil("\r\n\r\n"), " 503 "));
    peers.pop_front();
    EXPECT_TRUE(support::waitUntil(
        [&page] {
            HttpPeer next(page.port);
            next.write(page.get("events"));
            return holds(next.readUntil("\r\n\r\n"), " 200 OK");
        },
        60'000))
        << "a page that was closed makes room for another";
}

// More than the sockets hold. The browser's check has 100000 messages.
TEST_F(WebTest, NoneOf2000MessagesOfABurstIsLost) {
    constexpr int count = 2000;
    ServiceProcess burst("burst " + std::to_string(count) + " 4000", "burst", "", untilFollowed);
    const ToolRun run("web " + burst.connect());
    const PageAddress page = addressOf(run);
    HttpPeer peer(page.port);
    peer.write(page.get("events"));
    const std::string all = peer.readUntil("\"message " + std::to_string(count - 1) + " ");
    EXPECT_FALSE(holds(all, "event: missed"));
    EXPECT_FALSE(holds(all, "dropped"));
    int next = 0;
    std::size_t at = 0;
    for (; next < count; ++next) {
        const std::string message = "\"message\":\"message " + std::to_string(next) + " ";
        at = all.find(message, at);
        if (at == std::string::npos) {
            break;
        }
    }
    EXPECT_EQ(next, count);
}

TEST_F(WebTest, ABrowserThatReadsNothingSlowsNoProcessAndWhatItHasMissedIsCounted) {
    ServiceProcess burst(moreThanSocketsHold, "burst", "", untilFollowed);
    const ToolRun run("web --buffer 100 " + burst.connect());
    const PageAddress page = addressOf(run);
    HttpPeer silent(page.port);
    silent.write(page.get("events"));
    EXPECT_EQ(burst.process().wait(ToolRun::burstLimitMs), 0U) << burst.process().errors();
    HttpPeer reading(page.port);
    reading.write(page.get("events"));
    const std::string ended = "127.0.0.1:" + std::to_string(burst.port) + " has ended";
    EXPECT_TRUE(reading.readUntil(ended).ends_with(ended));
    // Even if the messages came too fast for the page's own queue, there are more than it keeps.
    HttpPeer again(page.port);
    again.write(page.get("events?after=0"));
    again.readUntil("event: missed\ndata: ");
    const int missed = std::stoi(again.readUntil("\n"));
    EXPECT_GT(missed, 0);
    again.readUntil("data: ");
    EXPECT_EQ(again.readUntil(","), "[[" + std::to_string(1 + missed) + ",");
}

}  // namespace
