// See windows.h.
#pragma once

using LPFN_WSARECVMSG = int (*)();
