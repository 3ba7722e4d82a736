#include "tools/log_application/connection/socket_wait.h"

#include <algorithm>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace log_application {

bool waitForReading(vek::net::SocketSet& reading, std::int64_t milliseconds) {
    // A day is as good as any longer limit.
    constexpr std::int64_t longest = 86'400'000;
    const std::int64_t limit = std::clamp<std::int64_t>(milliseconds, 0, longest);
    timeval timeout = {static_cast<long>(limit / 1000), static_cast<long>(limit % 1000 * 1000)};
    fd_set ready = {};
    FD_ZERO(&ready);
    for (std::uint32_t i = 0; i < reading.count; ++i) {
        ready.fd_array[ready.fd_count++] = reading.handles[i];
    }
    if (select(0, &ready, nullptr, nullptr, &timeout) == SOCKET_ERROR) {
        throw vek::NetError(static_cast<std::uint32_t>(WSAGetLastError()));
    }
    reading.clear();
    for (unsigned i = 0; i < ready.fd_count; ++i) {
        reading.add(ready.fd_array[i]);
    }
    return reading.count != 0;
}

}  // namespace log_application
