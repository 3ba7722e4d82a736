#include "tools/log_application/connection/client_socket.h"

#include "tools/log_application/connection/socket_wait.h"
#include "vek/base/windows.h"
// Needs windows.h.
#include <mstcpip.h>

#include "vek/exception.h"
#include "vek/net/ip4_address.h"

namespace log_application {

namespace {

// Makes a connect to a port of this host on which nobody listens fail at once. Otherwise Windows
// repeats it for 2 seconds. Failures are ignored: Windows before 8 doesn't know this.
void refuseAtOnce(SOCKET socket) {
    TCP_INITIAL_RTO_PARAMETERS parameters = {TCP_INITIAL_RTO_UNSPECIFIED_RTT,
                                             TCP_INITIAL_RTO_NO_SYN_RETRANSMISSIONS};
    DWORD bytes = 0;
    WSAIoctl(socket, SIO_TCP_INITIAL_RTO, &parameters, sizeof parameters, nullptr, 0, &bytes,
             nullptr, nullptr);
}

}  // namespace

ClientSocket::ClientSocket(StopSignal* stopSignal)
    : IPSocketT(false, vek::net::streamType, 0), stop(stopSignal) {
    const DWORD sendLimitMs = answerTimeMs;
    setOption(SOL_SOCKET, SO_SNDTIMEO, &sendLimitMs, sizeof sendLimitMs);
    // Finds out that the peer's machine has gone: a client that only receives wouldn't notice.
    setKeepAlive(true);
}

void ClientSocket::setBlocking(bool blocking) {
    u_long flag = blocking ? 0 : 1;
    if (ioctlsocket(handle, static_cast<long>(FIONBIO), &flag) != 0) {
        throw vek::NetError(static_cast<std::uint32_t>(WSAGetLastError()));
    }
}

void ClientSocket::connectTo(const Endpoint& endpoint) {
    vek::net::IP4Address address;
    address.fromString(endpoint.address);
    address.setPort(endpoint.port);
    if (endpoint.isLoopback()) {
        refuseAtOnce(handle);
    }
    setBlocking(false);
    try {
        connect(address);
    } catch (const vek::NetError& error) {
        if (error.code() != WSAEWOULDBLOCK) {
            throw;
        }
        waitForConnection();
    }
    setBlocking(true);
}

void ClientSocket::waitForConnection() {
    vek::net::SocketSet writing;
    vek::net::SocketSet errors;
    vek::net::SocketSet reading;
    writing.add(handle);
    errors.add(handle);
    if (stop != nullptr) {
        stop->addTo(reading);
    }
    if (!select(stop != nullptr ? &reading : nullptr, &writing, &errors, answerTimeMs) ||
        (!writing.isSet(handle) && !errors.isSet(handle))) {
        throw vek::NetError(WSAETIMEDOUT);
    }
    std::uint32_t failure = 0;
    std::int32_t size = sizeof failure;
    getOption(SOL_SOCKET, SO_ERROR, &failure, size);
    if (failure == WSAECONNREFUSED) {
        WSASetLastError(WSAECONNREFUSED);
        throw vek::NoPeer();
    }
    if (failure != 0 || errors.isSet(handle)) {
        throw vek::NetError(failure != 0 ? failure : WSAECONNABORTED);
    }
}

void ClientSocket::limitReading(std::optional<std::int64_t> milliseconds) {
    deadline.reset();
    if (milliseconds) {
        deadline.emplace(true);
        *deadline += *milliseconds;
    }
}

std::uint32_t ClientSocket::read(void* buffer, std::uint32_t size) {
    vek::net::SocketSet reading;
    reading.add(handle);
    if (stop != nullptr) {
        stop->addTo(reading);
    }
    if (!deadline) {
        select(&reading, nullptr, nullptr);
    } else {
        const std::int64_t left = *deadline - vek::time::MonotonicClock(true);
        if (left <= 0 || !waitForReading(reading, left)) {
            throw vek::NetError(WSAETIMEDOUT);
        }
    }
    if (!reading.isSet(handle)) {
        return 0;
    }
    return DataSocket::read(buffer, size);
}

}  // namespace log_application
