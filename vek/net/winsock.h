// Starting and ending Winsock, and the one extension function of it that the framework uses.
#pragma once

#include "vek/base/windows.h"

// Behind windows.h, which it needs.
#include <mswsock.h>

namespace vek::net {

// Starts Winsock 2.2 and looks WSARecvMsg up. Each call that returns owes one stopWinsock. Throws
// NetError, and has stopped Winsock again then. Stands on WSAStartup and WSAIoctl. For the thread
// that starts the process up.
void startWinsock();

// Takes one startWinsock back. A failure goes unnoticed. Stands on WSACleanup.
void stopWinsock();

// Null until the first startWinsock has returned.
LPFN_WSARECVMSG recvMsgFunction();

}  // namespace vek::net
