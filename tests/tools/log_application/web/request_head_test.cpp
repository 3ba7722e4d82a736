// Tests of tools/log_application/web/request_head.cpp.
#include "tools/log_application/web/request_head.h"

#include <gtest/gtest.h>

namespace {

using log_application::checkRequestHead;
using log_application::RequestHead;

const log_application::WebAccess access = {4711, "0123456789abcdef0123456789abcdef"};
const std::string goodPath = "/0123456789abcdef0123456789abcdef/";
const std::string goodHost = "Host: 127.0.0.1:4711\r\n";
const std::string goodOrigin = "Origin: http://127.0.0.1:4711\r\n";
const std::string form = "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 3\r\n";

int statusOf(const std::string& firstLine, const std::string& headers) {
    return checkRequestHead(firstLine + "\r\n" + headers + "\r\n", access).status;
}

int statusOfGet(const std::string& headers, const std::string& path = goodPath) {
    return statusOf("GET " + path + " HTTP/1.1", headers);
}

int statusOfPost(const std::string& headers) {
    return statusOf("POST " + goodPath + "level HTTP/1.1", headers);
}

TEST(RequestHeadTest, AcceptsTheRequestsOfThePage) {
    EXPECT_EQ(statusOfGet(goodHost), 0);
    EXPECT_EQ(statusOfGet("host:localhost:4711\r\n"), 0);
    EXPECT_EQ(statusOfGet(goodHost + goodOrigin), 0);
    EXPECT_EQ(statusOfGet(goodHost + "Origin: http://localhost:4711\r\n"), 0);
    EXPECT_EQ(statusOfGet(goodHost, goodPath + "events?include=a%20b"), 0);
    EXPECT_EQ(statusOf("HEAD " + goodPath + " HTTP/1.1", goodHost), 0);
    EXPECT_EQ(statusOfPost(goodHost + goodOrigin + form), 0);
}

TEST(RequestHeadTest, HostMustBeOurs) {
    for (const char* const host :
         {"", "Host: evil.example:4711\r\n", "Host: 127.0.0.1\r\n", "Host: 127.0.0.1:4712\r\n",
          "Host: 127.0.0.1:4711.evil.example\r\n", "Host: evil.example\r\n", "Host:\r\n",
          "Host: 127.0.0.1:04711\r\n", "Host: [::1]:4711\r\n"}) {
        EXPECT_EQ(statusOfGet(host), 403) << host;
    }
}

TEST(RequestHeadTest, OriginMustBeOursIfThereIsOne) {
    for (const char* const origin :
         {"http://evil.example", "null", "https://127.0.0.1:4711", "http://127.0.0.1",
          "http://127.0.0.1:4711.evil.example", "", "http://127.0.0.1:4711/"}) {
        EXPECT_EQ(statusOfGet(goodHost + "Origin: " + origin + "\r\n"), 403) << origin;
        EXPECT_EQ(statusOfPost(goodHost + "Origin: " + origin + "\r\n" + form), 403) << origin;
    }
    EXPECT_EQ(statusOfPost(goodHost + form), 403);
}

TEST(RequestHeadTest, ThePortOfHttpMayBeLeftOut) {
    const log_application::WebAccess usual = {80, access.token};
    const std::string start = "GET " + goodPath + " HTTP/1.1\r\nHost: ";
    for (const char* const ours : {"127.0.0.1", "localhost", "127.0.0.1:80"}) {
        const std::string host = ours;
        EXPECT_EQ(checkRequestHead(start + host + "\r\nOrigin: http://" + host + "\r\n\r\n", usual)
                      .status,
                  0)
            << host;
    }
    for (const char* const foreign : {"127.0.0.1:", "127.0.0.1:4711", "evil.example", ""}) {
        EXPECT_EQ(checkRequestHead(start + foreign + "\r\n\r\n", usual).status, 403) << foreign;
    }
}

TEST(RequestHeadTest, PathMustBeginWithTheToken) {
    for (const char* const path :
         {"/", "/app.js", "/0123456789abcdef0123456789abcdef", "/0123456789abcdef0123456789abcdee/",
          "/0123456789abcdef0123456789abcdef0/", "/0123456789ABCDEF0123456789abcdef/",
          "//0123456789abcdef0123456789abcdef/", "/?/0123456789abcdef0123456789abcdef/",
          "/x/0123456789abcdef0123456789abcdef/", "/0123456789abcdef0123456789abcde/",
          "/%30123456789abcdef0123456789abcdef/"}) {
        EXPECT_EQ(statusOfGet(goodHost, path), 403) << path;
    }
}

TEST(RequestHeadTest, MethodsAreThree) {
    for (const char* const method : {"PUT", "DELETE", "OPTIONS", "CONNECT", "get", "TRACE"}) {
        EXPECT_EQ(statusOf(std::string(method) + " " + goodPath + " HTTP/1.1", goodHost), 405)
            << method;
    }
}

TEST(RequestHeadTest, MalformedHeadsAreRefused) {
    for (const char* const line :
         {"", "GET", "GET /", "GET  HTTP/1.1", "GET / HTTP/1.0", "GET / HTTP/2",
          "GET /a b HTTP/1.1", "GET http://127.0.0.1:4711/ HTTP/1.1", "GET /\x01 HTTP/1.1"}) {
        EXPECT_EQ(statusOf(line, goodHost), 400) << line;
    }
    EXPECT_EQ(statusOfGet(goodHost + goodHost), 400);
    EXPECT_EQ(statusOfGet(goodHost + "no colon\r\n"), 400);
    EXPECT_EQ(statusOfGet(goodHost + ": no name\r\n"), 400);
    EXPECT_EQ(statusOfGet(goodHost + "X: a\r\n folded\r\n"), 400);
    EXPECT_EQ(statusOfGet(goodHost + "Name : blank\r\n"), 400);
    EXPECT_EQ(statusOfGet(goodHost + "X: \x7F\r\n"), 400);
    EXPECT_EQ(statusOfGet(goodHost + "X: a\nHost: b\r\n"), 400);
    EXPECT_EQ(statusOfGet(goodHost + std::string("X: \0\r\n", 6)), 400);
    EXPECT_EQ(checkRequestHead("GET / HTTP/1.1\r\nHost: a", access).status, 400);
    EXPECT_EQ(checkRequestHead("", access).status, 400);
}

TEST(RequestHeadTest, LongTargetsAreRefused) {
    const std::string path = goodPath + std::string(2048 - goodPath.size(), 'a');
    EXPECT_EQ(statusOfGet(goodHost, path), 0);
    EXPECT_EQ(statusOfGet(goodHost, path + "a"), 414);
}

TEST(RequestHeadTest, BodiesAreSmallForms) {
    const std::string ours = goodHost + goodOrigin;
    const std::string type = "Content-Type: application/x-www-form-urlencoded\r\n";
    EXPECT_EQ(statusOfPost(ours + type + "Content-Length: 8192\r\n"), 0);
    EXPECT_EQ(statusOfPost(ours + type + "Content-Length: 8193\r\n"), 413);
    EXPECT_EQ(statusOfPost(ours + type + "Content-Length: 99999999999999999999\r\n"), 413);
    for (const char* const length : {"", "-1", "+1", "0x10", "1 2", "a"}) {
        EXPECT_EQ(statusOfPost(ours + type + "Content-Length: " + length + "\r\n"), 400) << length;
    }
    EXPECT_EQ(statusOfPost(ours + type + "Content-Length: 3\r\nContent-Length: 4\r\n"), 400);
    EXPECT_EQ(statusOfPost(ours + type), 411);
    EXPECT_EQ(statusOfPost(ours + form + "Transfer-Encoding: chunked\r\n"), 501);
    EXPECT_EQ(statusOfPost(ours + "Content-Length: 3\r\n"), 415);
    EXPECT_EQ(statusOfPost(ours + "Content-Type: text/plain\r\nContent-Length: 3\r\n"), 415);
    EXPECT_EQ(statusOfPost(
                  ours + "Content-Type: multipart/form-data; boundary=x\r\nContent-Length: 3\r\n"),
              415);
    EXPECT_EQ(statusOfGet(goodHost + "Content-Length: 0\r\n"), 0);
    EXPECT_EQ(statusOfGet(goodHost + "Content-Length: 3\r\n"), 400);
}

TEST(RequestHeadTest, TheLibraryGetsOnlyTheHeadersThatAreUsed) {
    const RequestHead head = checkRequestHead(
        "GET " + goodPath + " HTTP/1.1\r\nRange: bytes=0-0,1-1\r\nAccept-Encoding: gzip\r\n" +
            goodHost + "Expect: 100-continue\r\nLast-Event-ID:  7 \r\nCookie: a\r\n\r\n",
        access);
    EXPECT_EQ(head.status, 0);
    EXPECT_EQ(head.accepted,
              "GET " + goodPath + " HTTP/1.1\r\nhost: 127.0.0.1:4711\r\nlast-event-id: 7\r\n\r\n");
}

TEST(RequestHeadTest, SaysWhetherTheConnectionCloses) {
    const std::string start = "GET " + goodPath + " HTTP/1.1\r\n" + goodHost;
    EXPECT_TRUE(checkRequestHead(start + "Connection: Close\r\n\r\n", access).closes);
    EXPECT_FALSE(checkRequestHead(start + "Connection: keep-alive\r\n\r\n", access).closes);
    EXPECT_FALSE(checkRequestHead(start + "\r\n", access).closes);
}

TEST(RequestHeadTest, SaysHowLongTheBodyIs) {
    EXPECT_EQ(checkRequestHead(
                  "POST " + goodPath + "level HTTP/1.1\r\n" + goodHost + goodOrigin + form + "\r\n",
                  access)
                  .bodyLength,
              3U);
}

TEST(IsSameToken, ComparesEveryCharacter) {
    using log_application::isSameToken;
    EXPECT_TRUE(isSameToken("abc", "abc"));
    EXPECT_FALSE(isSameToken("abc", "abd"));
    EXPECT_FALSE(isSameToken("xbc", "abc"));
    EXPECT_FALSE(isSameToken("ab", "abc"));
    EXPECT_FALSE(isSameToken("abcd", "abc"));
    EXPECT_FALSE(isSameToken("", "abc"));
}

}  // namespace
