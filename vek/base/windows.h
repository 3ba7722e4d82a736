// Includes <windows.h>: lean, without its min and max macros, and after Winsock 2, which otherwise
// clashes with the old Winsock that <windows.h> includes. No other file includes it directly.
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
