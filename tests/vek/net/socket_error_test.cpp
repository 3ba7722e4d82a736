#include "vek/net/socket_error.h"

#include <typeindex>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::net::SocketCall;

struct Case {
    SocketCall call;
    int code;
    std::type_index thrown;
};

constexpr SocketCall calls[] = {SocketCall::create, SocketCall::bind, SocketCall::connect,
                                SocketCall::transfer, SocketCall::other};

std::type_index thrownFor(SocketCall call, int code) {
    try {
        WSASetLastError(code);
        vek::net::throwSocketError(call);
    } catch (const vek::OsError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(code));
        return typeid(error);
    }
}

TEST(SocketError, HasAClassOfItsOwnForSomeCallsAndNumbers) {
    const Case cases[] = {
        {SocketCall::create, 10013, typeid(vek::PermissionError)},
        {SocketCall::bind, 10013, typeid(vek::PermissionError)},
        {SocketCall::bind, 10049, typeid(vek::NoSuchAddress)},
        {SocketCall::connect, 10061, typeid(vek::NoPeer)},
        {SocketCall::transfer, 10050, typeid(vek::NoNetwork)},
    };
    for (const int code : {0, 10004, 10013, 10022, 10048, 10049, 10050, 10054, 10061, 11001}) {
        for (const SocketCall call : calls) {
            std::type_index expected = typeid(vek::NetError);
            for (const Case& own : cases) {
                if (own.call == call && own.code == code) {
                    expected = own.thrown;
                }
            }
            EXPECT_EQ(thrownFor(call, code), expected) << static_cast<int>(call) << ' ' << code;
        }
    }
}

}  // namespace
