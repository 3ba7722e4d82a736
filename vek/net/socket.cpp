#include "vek/net/socket.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <limits>

#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/net/socket_error.h"

namespace vek::net {

namespace {

void check(int result, SocketCall call = SocketCall::other) {
    if (result == SOCKET_ERROR) {
        throwSocketError(call);
    }
}

sockaddr* bytesOf(const Address& address) {
    return static_cast<sockaddr*>(address.sockaddr);
}

using AddressQuery = int(WSAAPI*)(SOCKET, sockaddr*, int*);

void queryAddress(AddressQuery query, SOCKET socket, Address& address) {
    address.prepare();
    int length = address.length;
    check(query(socket, bytesOf(address), &length));
    address.length = std::min<std::int32_t>(address.length, length);
}

fd_set* systemSet(SocketSet* set) {
    return set == nullptr ? nullptr : reinterpret_cast<fd_set*>(&set->count);
}

bool selectUntil(SocketSet* reading, SocketSet* writing, SocketSet* errors, timeval* timeout) {
    const auto count = static_cast<int>(SocketSet::handleCount(reading, writing, errors));
    for (;;) {
        const int ready =
            ::select(count, systemSet(reading), systemSet(writing), systemSet(errors), timeout);
        if (ready != SOCKET_ERROR) {
            return ready > 0;
        }
        // Deliberately checks errno, which select doesn't set.
        if (errno != WSAEINTR) {
            throw OsError(GetLastError());
        }
    }
}

}  // namespace

Socket::Socket(int domain, int type, int protocol) : handle(::socket(domain, type, protocol)) {
    if (handle == invalidSocket) {
        throwSocketError(SocketCall::create);
    }
    keepFromChildren(handle);
}

Socket::~Socket() {
    if (handle == invalidSocket) {
        return;
    }
    try {
        close();
    } catch (const Exception& error) {
        std::cerr << "vek::net::Socket::~Socket"
                  << ": error closing socket:"
                  << "\n\n"
                  << error.printableText() << std::endl;
    }
}

bool Socket::isOpen() const {
    return handle != invalidSocket;
}

bool Socket::isDatagram() const {
    return false;
}

bool Socket::isStream() const {
    return true;
}

bool Socket::isReliable() const {
    return true;
}

bool Socket::isLossy() const {
    return false;
}

void Socket::close() {
    const NativeSocket closing = handle;
    handle = invalidSocket;
    check(closesocket(closing));
}

void Socket::bind(const Address& address) {
    check(::bind(handle, bytesOf(address), address.length), SocketCall::bind);
}

void Socket::connect(const Address& address) {
    check(::connect(handle, bytesOf(address), address.length), SocketCall::connect);
}

void Socket::shutdown(bool writeSide, bool readSide) {
    if (!writeSide && !readSide) {
        return;
    }
    const int how = writeSide && readSide ? SD_BOTH : writeSide ? SD_SEND : SD_RECEIVE;
    check(::shutdown(handle, how));
}

void Socket::localAddress(Address& address) const {
    queryAddress(getsockname, handle, address);
}

void Socket::peerAddress(Address& address) const {
    queryAddress(getpeername, handle, address);
}

void Socket::setFlag(int level, int name, bool on) {
    const BOOL value = on ? TRUE : FALSE;
    setOption(level, name, &value, sizeof value);
}

void Socket::setBroadcast(bool on) {
    setFlag(SOL_SOCKET, SO_BROADCAST, on);
}

void Socket::setKeepAlive(bool on) {
    setFlag(SOL_SOCKET, SO_KEEPALIVE, on);
}

void Socket::setReuseAddress() {
    setFlag(SOL_SOCKET, SO_REUSEADDR, true);
}

void Socket::setReusePort() {}

void Socket::setTimeoutOption(bool, std::int64_t) {}

void Socket::bufferSize(bool get, bool send, std::uint32_t& value) {
    const int name = send ? SO_SNDBUF : SO_RCVBUF;
    std::int32_t length = sizeof value;
    if (get) {
        getOption(SOL_SOCKET, name, &value, length);
    } else {
        setOption(SOL_SOCKET, name, &value, length);
    }
}

void Socket::getOption(int level, int name, void* buffer, std::int32_t& length) const {
    int systemLength = length;
    check(getsockopt(handle, level, name, static_cast<char*>(buffer), &systemLength));
    length = systemLength;
}

void Socket::setOption(int level, int name, const void* buffer, std::int32_t length) {
    check(setsockopt(handle, level, name, static_cast<const char*>(buffer), length));
}

bool Socket::select(SocketSet* reading, SocketSet* writing, SocketSet* errors) {
    return selectUntil(reading, writing, errors, nullptr);
}

bool Socket::select(SocketSet* reading, SocketSet* writing, SocketSet* errors,
                    std::int64_t timeout) {
    constexpr std::int64_t secondsLimit = std::numeric_limits<long>::max();
    timeval split = {};
    split.tv_sec = static_cast<long>(std::clamp(timeout / 1000, -secondsLimit, secondsLimit));
    // The remainder isn't scaled, deliberately.
    split.tv_usec = static_cast<long>(timeout % 1000);
    return selectUntil(reading, writing, errors, &split);
}

}  // namespace vek::net
