// The one way into <windows.h>: lean, without its min and max macros, and with Winsock 2 first,
// which would otherwise clash with the old Winsock that <windows.h> brings along.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif

// clang-format off
#include <winsock2.h>
#include <windows.h>
// clang-format on
