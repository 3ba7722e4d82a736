#include "tools/log_application/web/request_head.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>

#include "tools/log_application/connection/endpoint.h"

namespace log_application {

namespace {

constexpr int badRequest = 400;
constexpr int forbidden = 403;
constexpr int methodNotAllowed = 405;
constexpr int lengthRequired = 411;
constexpr int bodyTooLong = 413;
constexpr int targetTooLong = 414;
constexpr int wrongMediaType = 415;
constexpr int notImplemented = 501;

constexpr std::string_view lineEnd = "\r\n";

// Headers that are used, in lower case. "transfer-encoding" is refused.
constexpr std::array<std::string_view, 7> usedHeaders = {
    "connection",    "content-length", "content-type",     "host",
    "last-event-id", "origin",         "transfer-encoding"};

using Headers = std::map<std::string, std::string>;

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return lower;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string_view::npos
               ? ""
               : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

bool isPrintable(std::string_view text) {
    return std::ranges::all_of(
        text, [](char c) { return (c >= ' ' && c != '\x7F') || c == '\t' || c < 0; });
}

// Removes the first line of `head` and returns it; none without a line end.
std::optional<std::string_view> takeLine(std::string_view& head) {
    const std::size_t end = head.find(lineEnd);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view line = head.substr(0, end);
    head.remove_prefix(end + lineEnd.size());
    return isPrintable(line) ? std::optional(line) : std::nullopt;
}

// The used headers; none if a line is malformed, folded, or one of them is repeated.
std::optional<Headers> parseHeaders(std::string_view head) {
    Headers headers;
    for (;;) {
        const auto line = takeLine(head);
        if (!line) {
            return std::nullopt;
        }
        if (line->empty()) {
            return headers;
        }
        const std::size_t colon = line->find(':');
        if (colon == std::string_view::npos || colon == 0 ||
            line->substr(0, colon).find_first_of(" \t") != std::string_view::npos) {
            return std::nullopt;
        }
        const std::string name = lowerCase(line->substr(0, colon));
        if (std::ranges::find(usedHeaders, name) != usedHeaders.end() &&
            !headers.emplace(name, trimmed(line->substr(colon + 1))).second) {
            return std::nullopt;
        }
    }
}

const std::string& valueOf(const Headers& headers, const std::string& name) {
    static const std::string none;
    const auto found = headers.find(name);
    return found == headers.end() ? none : found->second;
}

struct RequestLine {
    std::string_view method;
    std::string_view target;
};

std::optional<RequestLine> parseRequestLine(std::string_view line) {
    constexpr std::string_view version = " HTTP/1.1";
    if (!line.ends_with(version)) {
        return std::nullopt;
    }
    line.remove_suffix(version.size());
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos) {
        return std::nullopt;
    }
    const RequestLine parts = {line.substr(0, blank), line.substr(blank + 1)};
    const bool plain = parts.target.starts_with("/") && parts.target.find(' ') == std::string::npos;
    return plain ? std::optional(parts) : std::nullopt;
}

// Whether `text` is `before`, one of our two names, and our port.
bool isOurs(const std::string& text, const std::string& before, std::uint16_t port) {
    // Browsers leave out the usual port.
    constexpr std::uint16_t usualPort = 80;
    const std::string end = ":" + std::to_string(port);
    return std::ranges::any_of(std::array{"127.0.0.1", "localhost"}, [&](const char* name) {
        return text == before + name + end || (port == usualPort && text == before + name);
    });
}

bool isAllowed(const RequestLine& line, const Headers& headers, const WebAccess& access) {
    if (!isOurs(valueOf(headers, "host"), "", access.port)) {
        return false;
    }
    if ((headers.contains("origin") || line.method == "POST") &&
        !isOurs(valueOf(headers, "origin"), "http://", access.port)) {
        return false;
    }
    const std::string_view path = line.target.substr(1, line.target.find('?') - 1);
    const std::size_t slash = path.find('/');
    return slash != std::string_view::npos && isSameToken(path.substr(0, slash), access.token);
}

// The status of a refusal because of the body; 0 for none.
int judgeBody(const RequestLine& line, const Headers& headers, std::size_t& length) {
    if (headers.contains("transfer-encoding")) {
        return notImplemented;
    }
    if (!headers.contains("content-length")) {
        return line.method == "POST" ? lengthRequired : 0;
    }
    const std::string& text = valueOf(headers, "content-length");
    const bool isNumber =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    const std::optional<std::uint32_t> number = parseNumber(text, longestBody);
    if (!isNumber) {
        return badRequest;
    }
    if (!number) {
        return bodyTooLong;
    }
    length = *number;
    if (line.method != "POST") {
        return length == 0 ? 0 : badRequest;
    }
    return valueOf(headers, "content-type").starts_with("application/x-www-form-urlencoded")
               ? 0
               : wrongMediaType;
}

}  // namespace

bool isSameToken(std::string_view one, std::string_view other) {
    // The length is no secret.
    unsigned difference = one.size() == other.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i) {
        const volatile unsigned differing =
            static_cast<unsigned char>(one[i]) ^ static_cast<unsigned char>(other[i]);
        difference |= differing;
    }
    return difference == 0;
}

RequestHead checkRequestHead(std::string_view head, const WebAccess& access) {
    RequestHead result;
    const auto refuse = [&result](int status) {
        result.status = status;
        return result;
    };
    const auto firstLine = takeLine(head);
    const auto line = firstLine ? parseRequestLine(*firstLine) : std::nullopt;
    const auto headers = parseHeaders(head);
    if (!line || !headers) {
        return refuse(badRequest);
    }
    if (line->target.size() > longestTarget) {
        return refuse(targetTooLong);
    }
    if (!isAllowed(*line, *headers, access)) {
        return refuse(forbidden);
    }
    if (line->method != "GET" && line->method != "HEAD" && line->method != "POST") {
        return refuse(methodNotAllowed);
    }
    if (const int status = judgeBody(*line, *headers, result.bodyLength)) {
        return refuse(status);
    }
    result.closes = lowerCase(valueOf(*headers, "connection")) == "close";
    result.accepted = std::string(*firstLine) + "\r\n";
    for (const auto& [name, value] : *headers) {
        result.accepted += name + ": " + value + "\r\n";
    }
    result.accepted += lineEnd;
    return result;
}

}  // namespace log_application
