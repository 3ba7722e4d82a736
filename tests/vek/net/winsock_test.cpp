#include "vek/net/winsock.h"

#include <gtest/gtest.h>

namespace {

bool canMakeSockets() {
    const SOCKET made = socket(AF_INET, SOCK_DGRAM, 0);
    if (made == INVALID_SOCKET) {
        return false;
    }
    closesocket(made);
    return true;
}

const LPFN_WSARECVMSG functionAheadOfMain = vek::net::recvMsgFunction();

TEST(Winsock, StandsFromTheFirstStartToTheLastStop) {
    EXPECT_FALSE(canMakeSockets());
    EXPECT_EQ(functionAheadOfMain, nullptr);
    vek::net::startWinsock();
    EXPECT_TRUE(canMakeSockets());
    vek::net::startWinsock();
    vek::net::stopWinsock();
    EXPECT_TRUE(canMakeSockets());
    vek::net::stopWinsock();
    EXPECT_FALSE(canMakeSockets());
    EXPECT_EQ(WSAGetLastError(), WSANOTINITIALISED);
}

TEST(Winsock, SpareStopIsHarmless) {
    vek::net::stopWinsock();
}

TEST(Winsock, FindsTheFunctionThatReceivesWithControlData) {
    vek::net::startWinsock();
    ASSERT_NE(vek::net::recvMsgFunction(), nullptr);
    const SOCKET receiver = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int addressSize = sizeof address;
    ASSERT_EQ(bind(receiver, reinterpret_cast<sockaddr*>(&address), addressSize), 0);
    ASSERT_EQ(getsockname(receiver, reinterpret_cast<sockaddr*>(&address), &addressSize), 0);
    const SOCKET sender = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_EQ(sendto(sender, "hello", 5, 0, reinterpret_cast<sockaddr*>(&address), addressSize), 5);
    char text[16] = {};
    WSABUF buffer = {sizeof text, text};
    WSAMSG message = {};
    message.lpBuffers = &buffer;
    message.dwBufferCount = 1;
    DWORD received = 0;
    EXPECT_EQ(vek::net::recvMsgFunction()(receiver, &message, &received, nullptr, nullptr), 0);
    EXPECT_EQ(std::string(text, received), "hello");
    closesocket(sender);
    closesocket(receiver);
    vek::net::stopWinsock();
}

}  // namespace
