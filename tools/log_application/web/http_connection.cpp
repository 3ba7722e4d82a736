#include "tools/log_application/web/http_connection.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "tools/log_application/program/waiting.h"
#include "tools/log_application/web/request_head.h"

namespace log_application {

HttpConnection::HttpConnection(SOCKET connected, const WebLimits& webLimits,
                               const std::atomic<bool>& stopFlag)
    : handle(connected), limits(webLimits), stopped(stopFlag) {
    u_long nonBlocking = 1;
    ioctlsocket(handle, static_cast<long>(FIONBIO), &nonBlocking);
}

// Returns false at `deadline`, on the clock of monotonicMs, or once stopped.
bool HttpConnection::waitFor(bool writing, std::int64_t deadline) const {
    while (!stopped) {
        const std::int64_t left = std::min(deadline - monotonicMs(), stopPollMs);
        if (left <= 0) {
            return false;
        }
        fd_set set = {};
        FD_ZERO(&set);
        set.fd_array[set.fd_count++] = handle;
        timeval limit = {0, static_cast<long>(left * 1000)};
        const int ready =
            select(0, writing ? nullptr : &set, writing ? &set : nullptr, nullptr, &limit);
        if (ready != 0) {
            return ready > 0;
        }
    }
    return false;
}

long HttpConnection::receive(char* buffer, std::size_t size, std::int64_t deadline) {
    if (!waitFor(false, deadline)) {
        return -1;
    }
    return recv(handle, buffer, static_cast<int>(size), 0);
}

HttpConnection::Outcome HttpConnection::readHead(std::string& head, std::int64_t waitMs) {
    constexpr std::string_view emptyLine = "\r\n\r\n";
    std::int64_t deadline = monotonicMs() + waitMs;
    bool begun = false;
    std::string text;
    ahead.swap(text);
    std::size_t end = text.find(emptyLine);
    while (end == std::string::npos) {
        if (text.size() > longestHead) {
            return Outcome::tooLarge;
        }
        if (!begun && !text.empty()) {
            begun = true;
            deadline = monotonicMs() + limits.requestMs;
        }
        std::array<char, 4096> buffer;
        const long size = receive(buffer.data(), buffer.size(), deadline);
        if (size <= 0) {
            return size < 0 && begun && !stopped ? Outcome::late : Outcome::closed;
        }
        // The empty line may have begun before.
        const std::size_t from =
            text.size() < emptyLine.size() ? 0 : text.size() - emptyLine.size();
        text.append(buffer.data(), static_cast<std::size_t>(size));
        end = text.find(emptyLine, from);
    }
    if (end + emptyLine.size() > longestHead) {
        return Outcome::tooLarge;
    }
    requestEnd = monotonicMs() + limits.requestMs;
    ahead = text.substr(end + emptyLine.size());
    head = text.substr(0, end + emptyLine.size());
    return Outcome::complete;
}

void HttpConnection::startRequest(std::string accepted, std::size_t bodyLength) {
    given = std::move(accepted);
    bodyLeft = bodyLength;
}

long HttpConnection::read(char* buffer, std::size_t size) {
    if (!given.empty()) {
        const std::size_t taken = std::min(size, given.size());
        std::memcpy(buffer, given.data(), taken);
        given.erase(0, taken);
        return static_cast<long>(taken);
    }
    size = std::min(size, bodyLeft);
    if (size == 0) {
        return 0;
    }
    if (!ahead.empty()) {
        const std::size_t taken = std::min(size, ahead.size());
        std::memcpy(buffer, ahead.data(), taken);
        ahead.erase(0, taken);
        bodyLeft -= taken;
        return static_cast<long>(taken);
    }
    const long received = receive(buffer, size, requestEnd);
    bodyLeft -= received > 0 ? static_cast<std::size_t>(received) : 0;
    return received;
}

long HttpConnection::write(const char* text, std::size_t size) {
    if (!waitFor(true, monotonicMs() + limits.writeMs)) {
        return -1;
    }
    const long sent = send(handle, text, static_cast<int>(std::min<std::size_t>(size, 65536)), 0);
    if (sent < 0 && WSAGetLastError() == WSAEWOULDBLOCK) {
        return 0;
    }
    return sent;
}

}  // namespace log_application
