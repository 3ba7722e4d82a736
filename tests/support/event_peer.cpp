// event_peer: the other side of the hand-shake that ends in a new GUI.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "vek/base/windows.h"

namespace {

constexpr char manual[] =
    "event_peer [--help] [--answer-after MS]\n"
    "\n"
    "Makes the two events of the update's hand-shake, waits up to 30 seconds for the helper to\n"
    "say that it is up, and answers it. Prints \"ready\" once the events exist.\n"
    "\n"
    "  --answer-after MS  lets MS milliseconds pass before it answers (default 500)\n"
    "\n"
    "Ends with 0 if the hand-shake took place, 1 if the helper didn't come, 2 if it can't run.\n";

// The names under which the processes of all sessions meet.
constexpr char event1Name[] = "Global\\vektolmareventguiupdate1";
constexpr char event2Name[] = "Global\\vektolmareventguiupdate2";

constexpr DWORD helperLimitMs = 30000;

int shakeHands(DWORD answerAfterMs) {
    const HANDLE event1 = CreateEventA(nullptr, FALSE, FALSE, event1Name);
    const HANDLE event2 = CreateEventA(nullptr, FALSE, FALSE, event2Name);
    if (event1 == nullptr || event2 == nullptr) {
        std::fprintf(stderr, "event_peer: can't make the events, error %lu\n", GetLastError());
        return 2;
    }
    std::puts("ready");
    std::fflush(stdout);
    if (WaitForSingleObject(event1, helperLimitMs) != WAIT_OBJECT_0) {
        std::fputs("event_peer: the helper didn't signal within 30 seconds\n", stderr);
        return 1;
    }
    std::puts("the helper is up and waits");
    Sleep(answerAfterMs);
    SetEvent(event2);
    std::puts("answered it");
    CloseHandle(event2);
    CloseHandle(event1);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    DWORD answerAfterMs = 500;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--help") {
            std::fputs(manual, stdout);
            return 0;
        }
        if (argument == "--answer-after" && i + 1 < argc) {
            char* end = nullptr;
            answerAfterMs = std::strtoul(argv[++i], &end, 10);
            if (end == argv[i] || *end != '\0') {
                std::fprintf(stderr, "event_peer: '%s' is no number of milliseconds\n", argv[i]);
                return 2;
            }
        } else {
            std::fprintf(stderr, "event_peer: unknown argument '%s'; --help lists the arguments\n",
                         argv[i]);
            return 2;
        }
    }
    return shakeHands(answerAfterMs);
}
