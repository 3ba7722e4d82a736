#include "vek/net/socket_error.h"

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek::net {

namespace {

struct Row {
    SocketCall call;
    int code;
    void (*throwIt)();
};

constexpr Row rows[] = {
    {SocketCall::create, WSAEACCES,
     [] { throw PermissionError(static_cast<std::uint32_t>(WSAGetLastError())); }},
    {SocketCall::bind, WSAEACCES, [] { throw PermissionError(GetLastError()); }},
    {SocketCall::bind, WSAEADDRNOTAVAIL, [] { throw NoSuchAddress(); }},
    {SocketCall::connect, WSAECONNREFUSED, [] { throw NoPeer(); }},
    {SocketCall::transfer, WSAENETDOWN, [] { throw NoNetwork(); }},
};

}  // namespace

void throwSocketError(SocketCall call) {
    const int code = WSAGetLastError();
    for (const Row& row : rows) {
        if (row.call == call && row.code == code) {
            row.throwIt();
        }
    }
    throw NetError(static_cast<std::uint32_t>(code));
}

}  // namespace vek::net
