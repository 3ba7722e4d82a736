// log_application::HttpConnection: the bytes of one connection, with limits of size and time.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/log_application/web/http_server.h"
#include "vek/base/no_copy.h"
#include "vek/base/windows.h"

namespace log_application {

// Not thread-safe.
class HttpConnection : public vek::NoCopy {
  public:
    // Doesn't own `connected`, which becomes non-blocking. `stopFlag` ends all waits.
    HttpConnection(SOCKET connected, const WebLimits& webLimits, const std::atomic<bool>& stopFlag);

    enum class Outcome { complete, closed, tooLarge, late };

    // Reads the head of the next request into `head`, up to and with its empty line. Waits up to
    // `waitMs` for its first byte.
    Outcome readHead(std::string& head, std::int64_t waitMs);

    // Lets `read` return `accepted`, and behind it the `bodyLength` bytes that follow the head.
    void startRequest(std::string accepted, std::size_t bodyLength);

    // True if the request was read as a whole, so that the next one may follow.
    bool isRead() const { return given.empty() && bodyLeft == 0; }

    // Reads what `startRequest` says. Returns the number of bytes, 0 at the end, less than 0 after
    // the time of a request.
    long read(char* buffer, std::size_t size);

    // Sends some of `text`. Returns the number of bytes, less than 0 if the client takes nothing
    // within its time, or has gone.
    long write(const char* text, std::size_t size);

    SOCKET socket() const { return handle; }

  private:
    bool waitFor(bool writing, std::int64_t deadline) const;
    long receive(char* buffer, std::size_t size, std::int64_t deadline);

    const SOCKET handle;
    const WebLimits limits;
    const std::atomic<bool>& stopped;
    std::string ahead;  // bytes behind the head
    std::string given;
    std::size_t bodyLeft = 0;
    std::int64_t requestEnd = 0;
};

}  // namespace log_application
