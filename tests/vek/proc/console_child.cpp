// A child on the console of its test: proc_console_child READY END. It enables Ctrl-C, which a new
// process group ignores at first, sets the event READY, and exits with code 55 at a Ctrl-C, or with
// 0 once the event END is set.
#include "vek/base/windows.h"

namespace {

constexpr DWORD longestWaitMs = 60000;

BOOL WINAPI interrupted(DWORD type) {
    ExitProcess(type == CTRL_C_EVENT ? 55 : 56);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 99;
    }
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(interrupted, TRUE);
    const HANDLE end = OpenEventA(SYNCHRONIZE, FALSE, argv[2]);
    SetEvent(OpenEventA(EVENT_MODIFY_STATE, FALSE, argv[1]));
    return WaitForSingleObject(end, longestWaitMs) == WAIT_OBJECT_0 ? 0 : 98;
}
