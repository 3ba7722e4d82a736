// Tests of tools/log_application/web/http_server.cpp over sockets, most of them attacks.
#include "tools/log_application/web/http_server.h"

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <thread>

#include "tests/support/files.h"
#include "tests/tools/log_application/support/http_peer.h"
#include "tests/tools/log_application/support/tool_test.h"
#include "tools/log_application/program/failure.h"

namespace {

using namespace log_application_test;
using log_application::BodyWriter;
using log_application::HttpServer;
using log_application::WebLimits;
using log_application::WebRequest;
using log_application::WebResponse;

const std::string token = "0123456789abcdef0123456789abcdef";

class HttpServerTest : public ToolTest {
  protected:
    void start(const WebLimits& limits = {}) {
        server = std::make_unique<HttpServer>(
            std::uint16_t{0}, token, [this](const WebRequest& request) { return answer(request); },
            std::vector<std::string>{"level"}, limits);
    }

    WebResponse answer(const WebRequest& request) {
        WebResponse response;
        response.body = "[" + request.method + " " + request.path + " a=" + request.parameter("a") +
                        " last=" + request.lastEventId + "]";
        if (request.path == "throw") {
            throw std::runtime_error("secret");
        }
        if (request.path == "stream") {
            response.stream = [this](const BodyWriter& write) {
                const std::string text(10'000, 'x');
                while (write(text)) {
                }
                ++streamsEnded;
            };
        }
        return response;
    }

    std::string host() const {
        return "Host: 127.0.0.1:" + std::to_string(server->port()) + "\r\n";
    }
    std::string origin() const {
        return "Origin: http://127.0.0.1:" + std::to_string(server->port()) + "\r\n";
    }
    std::string get(const std::string& path, const std::string& headers = "") const {
        return "GET /" + token + "/" + path + " HTTP/1.1\r\n" + host() + headers + "\r\n";
    }
    std::string post(const std::string& path, const std::string& body) const {
        return "POST /" + token + "/" + path + " HTTP/1.1\r\n" + host() + origin() +
               "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\n\r\n" + body;
    }
    // Sends `text` on a connection of its own, and returns what comes until its end.
    std::string exchange(const std::string& text) const {
        HttpPeer peer(server->port());
        peer.write(text);
        return peer.readAll();
    }

    std::atomic<int> streamsEnded = 0;
    std::unique_ptr<HttpServer> server;
};

TEST_F(HttpServerTest, ServesSeveralRequestsOfOneConnection) {
    start();
    HttpPeer peer(server->port());
    peer.write(get("page?a=1%262", "Last-Event-ID: 12\r\n"));
    EXPECT_TRUE(holds(peer.readUntil("]"), "\r\n\r\n[GET page a=1&2 last=12]"));
    peer.write(post("level", "a=b+c%3D"));
    EXPECT_TRUE(holds(peer.readUntil("]"), "[POST level a=b c= last=]"));
    peer.write(get("again") + get("third"));
    EXPECT_TRUE(holds(peer.readUntil("third a"), "[GET again a= last=]"));
}

TEST_F(HttpServerTest, EveryAnswerForbidsTheBrowserWhatThePageDoesNotNeed) {
    start();
    for (const std::string& request : {get("page", "Connection: close\r\n"),
                                       std::string("GET / HTTP/1.1\r\n") + host() + "\r\n"}) {
        const std::string answer = exchange(request);
        for (const char* const header :
             {"Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
              "img-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; "
              "frame-ancestors 'none'; require-trusted-types-for 'script'; trusted-types "
              "'none'\r\n",
              "X-Content-Type-Options: nosniff\r\n", "X-Frame-Options: DENY\r\n",
              "Referrer-Policy: no-referrer\r\n", "Cache-Control: no-store\r\n",
              "Cross-Origin-Resource-Policy: same-origin\r\n",
              "Cross-Origin-Opener-Policy: same-origin\r\n"}) {
            EXPECT_TRUE(holds(answer, header)) << header << " isn't in\n" << answer;
        }
        EXPECT_FALSE(holds(answer, "Access-Control")) << answer;
    }
}

TEST_F(HttpServerTest, RefusesForeignHostsAndOriginsAndMissingOrWrongTokens) {
    start();
    const std::string path = "GET /" + token + "/page HTTP/1.1\r\n";
    const std::string wrong = "GET /" + std::string(32, '0') + "/page HTTP/1.1\r\n";
    for (const std::string& request :
         {path + "Host: evil.example\r\n\r\n", path + "\r\n",
          path + host() + "Origin: http://evil.example\r\n\r\n",
          "GET /page HTTP/1.1\r\n" + host() + "\r\n", wrong + host() + "\r\n"}) {
        const std::string answer = exchange(request);
        const bool isBad = request == path + "\r\n";
        EXPECT_TRUE(answer.starts_with("HTTP/1.1 403 Forbidden\r\n")) << isBad << answer;
        EXPECT_FALSE(holds(answer, "[GET")) << answer;
    }
}

TEST_F(HttpServerTest, RefusesAHugeHeader) {
    start();
    const std::string answer = exchange(get("page", "X: " + std::string(20'000, 'x') + "\r\n"));
    EXPECT_TRUE(answer.empty() || answer.starts_with("HTTP/1.1 431 ")) << answer;
    EXPECT_FALSE(holds(answer, "[GET"));
}

TEST_F(HttpServerTest, EndsAConnectionWhoseHeaderNeverEnds) {
    WebLimits limits;
    limits.requestMs = 120'000;
    start(limits);
    HttpPeer peer(server->port());
    peer.write("GET / HTTP/1.1\r\nX: ");
    bool isOpen = true;
    for (int i = 0; isOpen && i < 10'000; ++i) {
        isOpen = peer.write(std::string(10'000, 'x'));
    }
    EXPECT_FALSE(isOpen);
}

TEST_F(HttpServerTest, ThousandsOfHeadersAreRefusedToo) {
    start();
    std::string headers;
    for (int i = 0; i < 3000; ++i) {
        headers += "A" + std::to_string(i) + ": b\r\n";
    }
    EXPECT_FALSE(holds(exchange(get("page", headers)), "[GET"));
}

TEST_F(HttpServerTest, RefusesAHugeBodyBeforeItComes) {
    start();
    std::string request = post("level", "");
    const std::string length = "Content-Length: 0";
    request.replace(request.find(length), length.size(), "Content-Length: 10000000");
    EXPECT_TRUE(exchange(request).starts_with("HTTP/1.1 413 "));
}

TEST_F(HttpServerTest, TakesABodyOfTheLimit) {
    start();
    HttpPeer peer(server->port());
    peer.write(post("level", "a=" + std::string(8190, 'y')));
    EXPECT_TRUE(holds(peer.readUntil("]"), std::string(8190, 'y')));
}

TEST_F(HttpServerTest, RangesOfThousandsOfPiecesAreIgnored) {
    start();
    std::string ranges = "bytes=0-0";
    for (int i = 0; i < 1000; ++i) {
        ranges += ",0-0";
    }
    HttpPeer peer(server->port());
    peer.write(get("page", "Range: " + ranges + "\r\n"));
    EXPECT_TRUE(peer.readUntil("]").starts_with("HTTP/1.1 200 OK\r\n"));
}

TEST_F(HttpServerTest, HalfARequestIsEndedInTimeAndHoldsUpNobody) {
    WebLimits limits;
    limits.requestMs = 1000;
    start(limits);
    HttpPeer silent(server->port());
    HttpPeer half(server->port());
    half.write("GET /" + token);
    std::string halfBody = post("level", "a=1");
    halfBody.pop_back();
    HttpPeer body(server->port());
    body.write(halfBody);
    EXPECT_TRUE(holds(exchange(get("page", "Connection: close\r\n")), "[GET page"));
    EXPECT_TRUE(half.readAll().starts_with("HTTP/1.1 408 "));
    EXPECT_EQ(silent.readAll(), "");
    EXPECT_TRUE(silent.readToTheEnd());
    EXPECT_FALSE(holds(body.readAll(), "[POST"));
    EXPECT_TRUE(body.readToTheEnd());
}

TEST_F(HttpServerTest, AConnectionWithoutAFurtherRequestIsEndedInTime) {
    WebLimits limits;
    limits.idleMs = 500;
    limits.requestMs = 120'000;
    start(limits);
    HttpPeer peer(server->port());
    peer.write(get("page"));
    EXPECT_TRUE(holds(peer.readUntil("]"), "[GET page"));
    EXPECT_TRUE(peer.readToTheEnd());
}

TEST_F(HttpServerTest, NothingFollowsOnARefusal) {
    WebLimits limits;
    limits.idleMs = 120'000;
    start(limits);
    HttpPeer peer(server->port());
    peer.write("GET / HTTP/1.1\r\n" + host() + "\r\n" + get("page"));
    EXPECT_FALSE(holds(peer.readUntil("[GET"), "[GET"));
    EXPECT_TRUE(peer.readToTheEnd());
}

TEST_F(HttpServerTest, ABodyIsNeverARequest) {
    start();
    // Refused before its body is read.
    const std::string answer = exchange(post("page", get("inner")));
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 405 ")) << answer;
    EXPECT_FALSE(holds(answer, "[GET inner")) << answer;
    HttpPeer peer(server->port());
    peer.write(post("level", get("inner")) + get("outer"));
    EXPECT_FALSE(holds(peer.readUntil("[GET outer"), "[GET inner"));
}

TEST_F(HttpServerTest, ARequestThatTricklesIsEndedInTime) {
    WebLimits limits;
    limits.requestMs = 500;
    start(limits);
    HttpPeer peer(server->port());
    const auto begin = std::chrono::steady_clock::now();
    while (peer.write("x") && std::chrono::steady_clock::now() - begin < std::chrono::seconds(20)) {
        Sleep(20);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
}

TEST_F(HttpServerTest, OneConnectionTooManyIsRefusedUntilAnotherEnds) {
    WebLimits limits;
    limits.connections = 3;
    limits.requestMs = 60'000;
    start(limits);
    std::list<HttpPeer> peers;
    for (int i = 0; i < 3; ++i) {
        peers.emplace_back(server->port()).write(get("page"));
        EXPECT_TRUE(holds(peers.back().readUntil("]"), "[GET page"));
    }
    HttpPeer further(server->port());
    EXPECT_TRUE(further.readAll().starts_with("HTTP/1.1 503 "));
    peers.pop_front();
    EXPECT_TRUE(support::waitUntil(
        [this] { return holds(exchange(get("page", "Connection: close\r\n")), "[GET page"); },
        20'000));
}

TEST_F(HttpServerTest, HundredsOfConnectionsLeaveItServing) {
    start();
    for (int round = 0; round < 3; ++round) {
        std::list<HttpPeer> peers;
        for (int i = 0; i < 100; ++i) {
            peers.emplace_back(server->port());
        }
    }
    EXPECT_TRUE(support::waitUntil(
        [this] { return holds(exchange(get("page", "Connection: close\r\n")), "[GET page"); },
        20'000));
}

TEST_F(HttpServerTest, AClientThatReadsNothingIsGivenUp) {
    WebLimits limits;
    limits.writeMs = 500;
    start(limits);
    HttpPeer peer(server->port());
    peer.write(get("stream"));
    EXPECT_TRUE(support::waitUntil([this] { return streamsEnded == 1; }, 20'000));
}

TEST_F(HttpServerTest, TheEndOfTheServerEndsIdleAndHalfConnections) {
    start();
    HttpPeer idle(server->port());
    HttpPeer half(server->port());
    half.write("GET ");
    HttpPeer stream(server->port());
    stream.write(get("stream"));
    EXPECT_TRUE(holds(stream.readUntil("xxx"), "HTTP/1.1 200 OK"));
    const auto begin = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
    EXPECT_EQ(streamsEnded, 1);
}

TEST_F(HttpServerTest, AnExceptionOfTheHandlerTellsTheBrowserNothing) {
    start();
    HttpPeer peer(server->port());
    peer.write(get("throw", "Connection: close\r\n"));
    const std::string answer = peer.readAll();
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 500 ")) << answer;
    EXPECT_FALSE(holds(answer, "secret")) << answer;
}

TEST_F(HttpServerTest, PostGoesToItsPathsOnly) {
    start();
    EXPECT_TRUE(exchange(get("level", "Connection: close\r\n")).starts_with("HTTP/1.1 405 "));
    HttpPeer peer(server->port());
    peer.write(post("page", "a=1"));
    EXPECT_TRUE(peer.readUntil("\r\n\r\n").starts_with("HTTP/1.1 405 "));
}

TEST_F(HttpServerTest, ListensOnOneAddressOnly) {
    start();
    EXPECT_TRUE(HttpPeer(server->port()).isConnected);
    EXPECT_FALSE(HttpPeer(server->port(), "127.0.0.2").isConnected);
}

TEST_F(HttpServerTest, APortThatIsTakenIsAFailure) {
    start();
    try {
        const HttpServer second(server->port(), token, nullptr, {});
        FAIL();
    } catch (const log_application::Failure& failure) {
        EXPECT_EQ(failure.exitCode(), exitLost);
        EXPECT_TRUE(holds(failure.description(), std::to_string(server->port())));
    }
}

}  // namespace
