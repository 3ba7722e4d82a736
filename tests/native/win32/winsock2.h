// See windows.h: there are no sockets.
#pragma once
