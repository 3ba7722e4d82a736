// The entry point of the test's libraries, which are linked without the runtime: each would have
// one of its own, which keeps handles of its threads when the library is freed.
#include "vek/base/windows.h"

extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE, DWORD, void*);

extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE, DWORD, void*) {
    return TRUE;
}
