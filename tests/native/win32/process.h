// See windows.h.
#pragma once

#include <cstdint>

std::uintptr_t _beginthreadex(void* attributes, unsigned stackSize, unsigned (*body)(void*),
                              void* argument, unsigned flags, unsigned* id);
