// log_application::RequestHead: the request line and the headers of a request, checked before the
// HTTP library sees any of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace log_application {

// The limits of a request, in bytes.
inline constexpr std::size_t longestHead = 16384;
inline constexpr std::size_t longestTarget = 2048;
inline constexpr std::size_t longestBody = 8192;

// Who may ask.
struct WebAccess {
    std::uint16_t port = 0;
    std::string token;
};

// Compares all characters, so that the time doesn't depend on how many are right. Throws nothing.
bool isSameToken(std::string_view one, std::string_view other);

struct RequestHead {
    // 0 if the request may be served, otherwise the status of the refusal.
    int status = 0;

    // What the library gets: the request line and those headers that are used here. Others never
    // reach it: some make it work hard, such as a "Range" of thousands of pieces.
    std::string accepted;

    // The length of the body that follows.
    std::size_t bodyLength = 0;

    // The client wants the connection to be closed.
    bool closes = false;
};

// Checks `head`, which ends with the empty line. A request is served if
//
// - its method is GET, HEAD or POST, and it is well-formed HTTP/1.1,
// - it has one "Host", 127.0.0.1 or localhost with our port, which may be missing if it is 80: a
// name
//   of another site that was made to resolve to 127.0.0.1 is refused,
// - its "Origin" is our own if it has one, which a POST must have,
// - its path begins with "/TOKEN/"; the comparison takes the same time whatever is wrong,
// - its body is a form of at most `longestBody` bytes with a "Content-Length".
//
// Throws nothing but std::bad_alloc.
RequestHead checkRequestHead(std::string_view head, const WebAccess& access);

}  // namespace log_application
