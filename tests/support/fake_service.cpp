// fake_service: a real service for the tests of the update, installed as "tolmar" with the
// executable <directory>\tolmar.exe. It is built once for each FAKE_SERVICE_VERSION. A file sets
// how each version behaves, since a service gets no environment and no directory of its own. All
// its files are beside its executable:
//
//   tolmar.settings   read at the start. A section "[version N]" for each version, with the keys
//       start-delay-ms        how long it stays in START_PENDING
//       late-stop-ms          how long it stays in RUNNING after it has taken the stop control
//       stop-delay-ms         how long it stays in STOP_PENDING
//       linger-ms             how long the process lives on after it reported STOPPED
//       falls-after-ms        goes from RUNNING into STOP_PENDING by itself after this time
//       refuses-stop          1: takes no stop control
//       ignores-stop          1: takes the stop control and runs on
//       starts-forever        1: never leaves START_PENDING
//       dies-before-connecting  1: the process ends without a word to the service manager
//       dies-while-starting   1: reports STOPPED out of START_PENDING, and ends
//   tolmar.journal    a line "version N STATE" is added ahead of each report of a state
//   tolmar.gui        started with the last argument -gui, it is the GUI: it writes its raw command
//                     line into this file and ends
//
// When tolmar.settings is removed it stops at once, whatever its settings said: so no test leaves a
// process behind. For the same reason no process lives longer than safetyLimitMs.
#include <string>

#include "vek/base/windows.h"

namespace {

constexpr ULONGLONG safetyLimitMs = 180000;
constexpr DWORD lookMs = 50;  // the interval of its checks whether it must end
constexpr DWORD forever = INFINITE;
constexpr char serviceName[] = "tolmar";

ULONGLONG processStart = 0;
SERVICE_STATUS_HANDLE statusHandle = nullptr;
HANDLE stopRequest = nullptr;

std::string besideExecutable(const char* name) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string executable = path;
    return executable.substr(0, executable.find_last_of('\\') + 1) + name;
}

void writeText(const std::string& path, const std::string& text, DWORD access, DWORD disposition) {
    const HANDLE file = CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        DWORD written = 0;
        WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        CloseHandle(file);
    }
}

DWORD setting(const char* key) {
    return GetPrivateProfileIntA("version " FAKE_SERVICE_VERSION, key, 0,
                                 besideExecutable("tolmar.settings").c_str());
}

bool mustEnd() {
    static const std::string settings = besideExecutable("tolmar.settings");
    return GetFileAttributesA(settings.c_str()) == INVALID_FILE_ATTRIBUTES ||
           GetTickCount64() - processStart > safetyLimitMs;
}

// Lets `milliseconds` pass, or less if `interrupt` is signalled or the process must end.
void pass(DWORD milliseconds, HANDLE interrupt = nullptr) {
    const ULONGLONG start = GetTickCount64();
    while (!mustEnd() && (milliseconds == forever || GetTickCount64() - start < milliseconds)) {
        if (interrupt == nullptr) {
            Sleep(lookMs);
        } else if (WaitForSingleObject(interrupt, lookMs) == WAIT_OBJECT_0) {
            return;
        }
    }
}

void report(DWORD state, const char* name) {
    // Before the report: whoever sees the state finds the line.
    writeText(besideExecutable("tolmar.journal"),
              std::string("version " FAKE_SERVICE_VERSION " ") + name + "\n", FILE_APPEND_DATA,
              OPEN_ALWAYS);
    SERVICE_STATUS status = {};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted =
        state == SERVICE_RUNNING && setting("refuses-stop") == 0 ? SERVICE_ACCEPT_STOP : 0;
    status.dwWaitHint = static_cast<DWORD>(safetyLimitMs);
    SetServiceStatus(statusHandle, &status);
}

void WINAPI onControl(DWORD control) {
    if (control == SERVICE_CONTROL_STOP && setting("ignores-stop") == 0) {
        SetEvent(stopRequest);
    }
}

void WINAPI serviceMain(DWORD, char**) {
    statusHandle = RegisterServiceCtrlHandlerA(serviceName, onControl);
    report(SERVICE_START_PENDING, "starting");
    pass(setting("starts-forever") != 0 ? forever : setting("start-delay-ms"));
    if (setting("dies-while-starting") == 0 && !mustEnd()) {
        report(SERVICE_RUNNING, "running");
        const DWORD fallsAfter = setting("falls-after-ms");
        pass(fallsAfter != 0 ? fallsAfter : forever, stopRequest);
        pass(setting("late-stop-ms"));
        report(SERVICE_STOP_PENDING, "stopping");
        pass(setting("stop-delay-ms"));
    }
    report(SERVICE_STOPPED, "stopped");
}

void actAsGui() {
    const std::string file = besideExecutable("tolmar.gui");
    // Appears whole or not at all.
    writeText(file + ".new", GetCommandLineA(), GENERIC_WRITE, CREATE_ALWAYS);
    MoveFileA((file + ".new").c_str(), file.c_str());
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    processStart = GetTickCount64();
    if (std::string(GetCommandLineA()).ends_with(" -gui")) {
        actAsGui();
        return 0;
    }
    if (setting("dies-before-connecting") != 0) {
        return 1;
    }
    stopRequest = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    char name[] = "tolmar";
    const SERVICE_TABLE_ENTRYA services[] = {{name, serviceMain}, {nullptr, nullptr}};
    StartServiceCtrlDispatcherA(services);
    pass(setting("linger-ms"));
    return 0;
}
