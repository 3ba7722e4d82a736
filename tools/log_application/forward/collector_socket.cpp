#include "tools/log_application/forward/collector_socket.h"

#include <algorithm>
#include <array>
#include <vector>

#include "vek/base/windows.h"
// Needs windows.h.
#include <mstcpip.h>

#include "vek/exception.h"
#include "vek/net/address.h"
#include "vek/net/tcp_socket.h"
#include "vek/time/clock.h"

namespace log_application {

namespace {

constexpr std::int64_t pollMs = 50;

[[noreturn]] void throwLastError() {
    throw vek::NetError(static_cast<std::uint32_t>(WSAGetLastError()));
}

class SystemAddress final : public vek::net::Address {
  public:
    explicit SystemAddress(const RawAddress& raw) : bytes(raw.bytes.begin(), raw.bytes.end()) {
        sockaddr = bytes.data();
        length = static_cast<std::int32_t>(bytes.size());
    }

  private:
    std::vector<char> bytes;
};

}  // namespace

CollectorSocket::CollectorSocket(const RawAddress& address, std::int64_t limitMs,
                                 const std::function<bool()>& isOver)
    : IPSocketT(address.isIp6, vek::net::streamType, 0) {
    std::array<std::uint32_t, 3> keepAlive = vek::net::keepAliveInput({60, 5, 0});
    DWORD returned = 0;
    WSAIoctl(handle, SIO_KEEPALIVE_VALS, keepAlive.data(), sizeof keepAlive, nullptr, 0, &returned,
             nullptr, nullptr);
    // Urgent data is read like other data, and isn't taken for an error.
    setFlag(SOL_SOCKET, SO_OOBINLINE, true);
    u_long nonBlocking = 1;
    if (ioctlsocket(handle, static_cast<long>(FIONBIO), &nonBlocking) != 0) {
        throwLastError();
    }
    try {
        connect(SystemAddress(address));
    } catch (const vek::NetError& error) {
        if (error.code() != WSAEWOULDBLOCK) {
            throw;
        }
        waitForConnection(limitMs, isOver);
    }
}

void CollectorSocket::waitForConnection(std::int64_t limitMs, const std::function<bool()>& isOver) {
    vek::time::MonotonicClock end(true);
    end += limitMs;
    while (!isReady(Event::connected, pollMs)) {
        if (isOver() || end - vek::time::MonotonicClock(true) <= 0) {
            throw vek::NetError(WSAETIMEDOUT);
        }
    }
}

CollectorSocket::Ready CollectorSocket::waitFor(bool toWrite, std::int64_t limitMs) {
    if (!toWrite) {
        return {isReady(Event::readable, limitMs), false};
    }
    const bool isWritable = isReady(Event::writable, limitMs);
    return {isReady(Event::readable, 0), isWritable};
}

// The socket is in one set alone: Wine's server 8.0 dies if a socket is in the set for reading and
// in another one while its peer closes the connection. Only a connect that fails needs the third
// set.
bool CollectorSocket::isReady(Event event, std::int64_t limitMs) {
    const auto setOf = [this](bool isWanted) {
        fd_set set = {};
        set.fd_count = isWanted ? 1 : 0;
        set.fd_array[0] = handle;
        return set;
    };
    fd_set reading = setOf(event == Event::readable);
    fd_set writing = setOf(event != Event::readable);
    fd_set failing = setOf(event == Event::connected);
    const std::int64_t wait = std::max<std::int64_t>(limitMs, 0);
    timeval limit = {static_cast<long>(wait / 1000), static_cast<long>(wait % 1000 * 1000)};
    if (::select(0, &reading, &writing, &failing, &limit) == SOCKET_ERROR) {
        throwLastError();
    }
    std::uint32_t failure = 0;
    std::int32_t size = sizeof failure;
    getOption(SOL_SOCKET, SO_ERROR, &failure, size);
    if (failure != 0 || failing.fd_count != 0) {
        throw vek::NetError(failure != 0 ? failure : WSAECONNABORTED);
    }
    return reading.fd_count + writing.fd_count != 0;
}

std::size_t CollectorSocket::writeSome(const std::string& bytes) {
    try {
        return write(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    } catch (const vek::NetError& error) {
        if (error.code() != WSAEWOULDBLOCK) {
            throw;
        }
        return 0;
    }
}

bool CollectorSocket::discard() {
    std::array<char, 4096> room;
    return read(room.data(), room.size()) != 0;
}

}  // namespace log_application
