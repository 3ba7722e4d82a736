// aborting_program: makes the helper's system, as the helper does first, and aborts. It has no
// console, like the helper, so the C runtime would show its message in a box. Ends with
//
//   3    without a message box
//   4    with one: the runtime has loaded user32.dll
//   5    user32.dll was there from the start, so nothing can be said
//   6    the system may show message boxes
//   7    the runtime may show message boxes: not every runtime shows one for an abort
#include <csignal>
#include <cstdlib>

#include "source/tolmar/win32_system.h"

namespace {

constexpr UINT noBoxes = SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX;

bool canShowBoxes() {
    return GetModuleHandleA("user32.dll") != nullptr;
}

// The runtime calls this behind its message.
void onAbort(int) {
    std::_Exit(canShowBoxes() ? 4 : 3);
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    if (canShowBoxes()) {
        return 5;
    }
    std::signal(SIGABRT, onAbort);
    const tolmar::Win32System system;
    if ((GetErrorMode() & noBoxes) != noBoxes) {
        return 6;
    }
    if (_set_error_mode(_REPORT_ERRMODE) != _OUT_TO_STDERR) {
        return 7;
    }
    std::abort();
}
