#include "vek/net/udp_socket.h"

#include "tests/support/replaced_import.h"
#include "tests/vek/net/loopback.h"
#include "vek/exception.h"

namespace {

using namespace vek::net;
using namespace vek::test;

class UDPSocketTest : public WinsockTest {};

// The last call of WSAIoctl.
DWORD lastCode = 0;
BOOL lastInput = TRUE;
DWORD lastInputSize = 0;
int nextResult = 0;

int WSAAPI recordIoctl(SOCKET, DWORD code, LPVOID input, DWORD inputSize, LPVOID, DWORD, LPDWORD,
                       LPWSAOVERLAPPED, LPWSAOVERLAPPED_COMPLETION_ROUTINE) {
    lastCode = code;
    lastInputSize = inputSize;
    lastInput = *static_cast<const BOOL*>(input);
    WSASetLastError(WSAEOPNOTSUPP);
    return nextResult;
}

TEST_F(UDPSocketTest, IgnoringLostReceiversTurnsTheReportOff) {
    UDPSocket socket(false);
    const support::ReplacedImport<decltype(&WSAIoctl)> replaced("WSAIoctl", recordIoctl);
    nextResult = 0;
    socket.ignoreLostReceivers();
    EXPECT_EQ(lastCode, 0x9800000Cu);
    EXPECT_EQ(lastInputSize, 4u);
    EXPECT_EQ(lastInput, FALSE);
}

TEST_F(UDPSocketTest, IgnoringLostReceiversThrowsTheSystemsError) {
    UDPSocket socket(false);
    const support::ReplacedImport<decltype(&WSAIoctl)> replaced("WSAIoctl", recordIoctl);
    nextResult = SOCKET_ERROR;
    try {
        socket.ignoreLostReceivers();
        ADD_FAILURE();
    } catch (const vek::NetError& error) {
        EXPECT_EQ(error.code(), static_cast<std::uint32_t>(WSAEOPNOTSUPP));
    }
}

TEST_F(UDPSocketTest, ReceivesGoOnAfterADatagramToAClosedPort) {
    UDPSocket socket(false);
    const IP4Address address = bindToLoopback(socket);
    limitReceiving(socket);
    EXPECT_NO_THROW(socket.ignoreLostReceivers());
    IP4Address closed;
    {
        UDPSocket gone(false);
        closed = bindToLoopback(gone);
    }
    socket.sendTo("x", 1, closed);
    UDPSocket sender(false);
    sender.sendTo("y", 1, address);
    char text[4] = {};
    EXPECT_EQ(socket.read(text, sizeof text), 1u);
    EXPECT_EQ(text[0], 'y');
}

}  // namespace
