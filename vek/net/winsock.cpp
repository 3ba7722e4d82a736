#include "vek/net/winsock.h"

#include "vek/exception.h"

namespace vek::net {

namespace {

LPFN_WSARECVMSG recvMsg = nullptr;

// Returns the error number, or 0 for success.
DWORD lookUpRecvMsg() {
    const SOCKET socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    GUID function = WSAID_WSARECVMSG;
    DWORD size = 0;
    DWORD error = 0;
    if (WSAIoctl(socket, SIO_GET_EXTENSION_FUNCTION_POINTER, &function, sizeof function, &recvMsg,
                 sizeof recvMsg, &size, nullptr, nullptr) != 0) {
        error = static_cast<DWORD>(WSAGetLastError());
    }
    closesocket(socket);
    return error;
}

}  // namespace

void startWinsock() {
    WSADATA data;
    const int failure = WSAStartup(MAKEWORD(2, 2), &data);
    if (failure != 0) {
        throw NetError(static_cast<std::uint32_t>(failure));
    }
    const DWORD error = lookUpRecvMsg();
    if (error != 0) {
        WSACleanup();
        throw NetError(error);
    }
}

void stopWinsock() {
    WSACleanup();
}

LPFN_WSARECVMSG recvMsgFunction() {
    return recvMsg;
}

}  // namespace vek::net
