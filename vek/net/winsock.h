// Starts and stops Winsock, and looks up the extension function WSARecvMsg.
#pragma once

#include "vek/base/windows.h"

// Needs windows.h first.
#include <mswsock.h>

namespace vek::net {

// Starts Winsock 2.2 and looks up WSARecvMsg. Calls WSAStartup and WSAIoctl. Call stopWinsock once
// for each call that returned. Throws NetError; Winsock is stopped again then. Not thread-safe: for
// the thread that starts the process up.
void startWinsock();

// Undoes one startWinsock. Calls WSACleanup. Failures are ignored.
void stopWinsock();

// Returns WSARecvMsg, or null until the first startWinsock has returned.
LPFN_WSARECVMSG recvMsgFunction();

}  // namespace vek::net
