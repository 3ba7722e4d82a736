// Heads of requests to the page: what is accepted is judged again here, line by line.
#include <algorithm>
#include <array>
#include <cctype>
#include <memory>
#include <set>
#include <vector>

#include "tests/native/fuzz/fuzz.h"
#include "tools/log_application/web/request_head.h"

namespace {

using log_application::checkRequestHead;
using log_application::RequestHead;
using log_application::WebAccess;
using vek::test::require;

const WebAccess access = {4711, "0123456789abcdef"};

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](char character) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    });
    return text;
}

// How many lines of `head` begin with `name`, whatever a line ends with and whatever surrounds the
// name.
int linesNamed(const std::string& head, const std::string& name) {
    int count = 0;
    std::string line;
    for (const char character : lowerCase(head) + "\n") {
        if (character == '\n' || character == '\r') {
            count += line.starts_with(name + ":") ? 1 : 0;
            line.clear();
        } else if (character > ' ') {
            line += character;
        }
    }
    return count;
}

// The head in a block of its exact length, so that a character behind it can't be read unnoticed.
RequestHead check(const std::string& head, const WebAccess& with = access) {
    const std::unique_ptr<char[]> block(new char[head.size()]);
    std::ranges::copy(head, block.get());
    return checkRequestHead({block.get(), head.size()}, with);
}

std::vector<std::string> linesOf(const std::string& head) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < head.size();) {
        const std::size_t end = head.find("\r\n", at);
        require(end != std::string::npos, "each accepted line has its end");
        lines.push_back(head.substr(at, end - at));
        for (const char character : lines.back()) {
            require(static_cast<unsigned char>(character) >= ' ' || character == '\t',
                    "no control character is accepted");
        }
        at = end + 2;
    }
    require(!lines.empty() && lines.back().empty(), "the empty line is the end");
    lines.pop_back();
    require(!lines.empty() && std::ranges::find(lines, "") == lines.end(), "and the only one");
    return lines;
}

// Returns the method.
std::string checkFirstLine(const std::string& line) {
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    require(first != std::string::npos && last > first, "the first line has three parts");
    const std::string target = line.substr(first + 1, last - first - 1);
    require(target.find(' ') == std::string::npos && line.substr(last) == " HTTP/1.1",
            "and no more of them");
    require(target.size() <= log_application::longestTarget, "the target isn't too long");
    require(target.starts_with("/" + access.token + "/"), "no request without the token");
    return line.substr(0, first);
}

void checkHeaders(const std::vector<std::string>& lines, const std::string& method,
                  const RequestHead& head) {
    std::set<std::string> names;
    bool hasHost = false;
    bool hasOrigin = false;
    bool hasForm = false;
    std::size_t length = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::size_t colon = lines[i].find(": ");
        require(colon != std::string::npos, "a header has a name and a value");
        const std::string name = lines[i].substr(0, colon);
        const std::string value = lines[i].substr(colon + 2);
        require(names.insert(name).second, "no header comes twice");
        if (name == "host") {
            hasHost = value == "127.0.0.1:4711" || value == "localhost:4711";
            require(hasHost, "no foreign host");
        } else if (name == "origin") {
            hasOrigin = value == "http://127.0.0.1:4711" || value == "http://localhost:4711";
            require(hasOrigin, "no foreign origin");
        } else if (name == "content-length") {
            require(!value.empty() && value.find_first_not_of("0123456789") == std::string::npos,
                    "a length is a number");
            length = std::stoul(value);
        } else if (name == "content-type") {
            hasForm = value.starts_with("application/x-www-form-urlencoded");
        } else {
            require(name == "connection" || name == "last-event-id",
                    "no other header gets through");
        }
    }
    require(hasHost, "there is a host");
    require(length == head.bodyLength && length <= log_application::longestBody,
            "the body has its limit");
    if (method == "POST") {
        require(hasOrigin && hasForm && names.contains("content-length"),
                "a change comes from our page, as a form");
    } else {
        require((method == "GET" || method == "HEAD") && length == 0, "others have no body");
    }
}

// Nothing that was accepted is accepted with another token, port, host or origin.
void checkNeighbours(const std::string& head, std::size_t place) {
    WebAccess other = access;
    other.token[place % other.token.size()] = 'x';
    require(check(head, other).status == 403, "another token");
    other = access;
    other.token.pop_back();
    require(check(head, other).status == 403, "a shorter token");
    other = access;
    ++other.port;
    require(check(head, other).status == 403, "another port");
    std::string foreign = head;
    foreign.insert(foreign.find("\r\nhost: ") + 8, "evil.");
    require(check(foreign).status == 403, "another host");
    foreign = head;
    const std::size_t origin = foreign.find("\r\norigin: ");
    if (origin == std::string::npos) {
        foreign.insert(foreign.size() - 2, "Origin: null\r\n");
    } else {
        foreign.insert(foreign.find("\r\n", origin + 2), ".evil");
    }
    require(check(foreign).status == 403, "another origin");
}

RequestHead checkHead(const std::string& head, std::size_t place) {
    const RequestHead result = check(head);
    if (result.status != 0) {
        require(std::set({400, 403, 405, 411, 413, 414, 415, 501}).contains(result.status),
                "a refusal has a status of its own");
        require(result.accepted.empty(), "nothing of a refused request gets further");
        return result;
    }
    const std::vector<std::string> lines = linesOf(result.accepted);
    require(head.starts_with(lines.front() + "\r\n"), "the first line is passed on as it is");
    checkHeaders(lines, checkFirstLine(lines.front()), result);
    const std::string ours = head.substr(0, head.find("\r\n\r\n") + 4);
    require(linesNamed(ours, "host") == 1, "a second host isn't hidden");
    require(linesNamed(ours, "origin") <= 1 && linesNamed(ours, "content-length") <= 1,
            "nor a second origin or length");
    require(linesNamed(ours, "transfer-encoding") == 0, "nor another encoding");
    const RequestHead again = check(result.accepted);
    require(again.status == 0 && again.accepted == result.accepted &&
                again.bodyLength == result.bodyLength && again.closes == result.closes,
            "what is passed on means the same");
    require(check(ours).accepted == result.accepted, "what follows on the head is no part of it");
    checkNeighbours(result.accepted, place);
    return result;
}

// A head of parts, some of them right: whole texts are seldom accepted.
std::string builtHead(FuzzedDataProvider& input) {
    static constexpr std::array<const char*, 24> headers = {
        "Host: 127.0.0.1",
        "Origin: http://localhost",
        "Host: 127.0.0.1:4711",
        "host:localhost:4711 ",
        "Host: evil.example:4711",
        "Host: [::1]:4711",
        "Origin: http://127.0.0.1:4711",
        "ORIGIN:\thttp://localhost:4711",
        "Origin: null",
        "Origin:",
        "Content-Type: application/x-www-form-urlencoded",
        "Content-Type: text/plain",
        "Content-Length: 3",
        "Content-Length: 0",
        "Content-Length: 8193",
        "Content-Length: +1",
        "Transfer-Encoding: chunked",
        "Connection: Close",
        "Last-Event-ID: 7",
        "Range: bytes=0-0",
        "Host : 127.0.0.1:4711",
        " folded",
        "no colon",
        "X-A: \xC3\xBC"};
    static constexpr std::array<const char*, 5> methods = {"GET", "POST", "HEAD", "PUT", "get"};
    const auto text = [&input] { return input.ConsumeRandomLengthString(30); };
    const auto lineEnd = [&input] {
        static constexpr std::array<const char*, 4> others = {"\n", "\r", "\r\r\n", " \r\n"};
        return input.ConsumeIntegralInRange(0, 40) == 40 ? input.PickValueInArray(others) : "\r\n";
    };
    std::string head = input.PickValueInArray(methods);
    head += " /" + access.token + "/" + text() + " HTTP/1.1" + lineEnd();
    if (input.ConsumeBool()) {
        head += "Host: 127.0.0.1:4711\r\nOrigin: http://127.0.0.1:4711\r\n";
    }
    for (int i = input.ConsumeIntegralInRange(0, 6); i > 0; --i) {
        head += input.ConsumeIntegralInRange(0, 9) == 9 ? text() : input.PickValueInArray(headers);
        head += lineEnd();
    }
    return head + lineEnd() + text();
}

// Whatever a browser adds, its own request is served.
void checkOwnRequest(FuzzedDataProvider& input) {
    std::string added = input.ConsumeRandomLengthString(40);
    std::erase_if(added, [](char character) {
        return (static_cast<unsigned char>(character) < ' ' && character != '\t') ||
               character == '\x7F';
    });
    const bool isPost = input.ConsumeBool();
    const std::string head =
        (isPost ? "POST /" : "GET /") + access.token +
        "/level HTTP/1.1\r\nHost: 127.0.0.1:4711\r\n" +
        (isPost ? "Origin: http://127.0.0.1:4711\r\nContent-Length: 7\r\nContent-Type: "
                  "application/x-www-form-urlencoded;charset=UTF-8\r\n"
                : "") +
        "X-Added: " + added + "\r\n\r\n";
    const RequestHead result = checkHead(head, added.size());
    require(result.status == 0 && result.bodyLength == (isPost ? 7u : 0u), "our page is served");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkHead(vek::test::textOf(data, size), size);
    FuzzedDataProvider input(data, size);
    const std::string head = builtHead(input);
    checkHead(head, input.ConsumeIntegralInRange<std::size_t>(0, 100));
    checkOwnRequest(input);
    return 0;
}
