#include "service.h"

#include <exception>
#include <iostream>
#include <string>

#include "spool_watch.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

// The service manager calls plain functions, and a process has one service.
const char* serviceName = nullptr;
SpoolWatch* watched = nullptr;
SERVICE_STATUS_HANDLE statusHandle = nullptr;
DWORD exitCode = NO_ERROR;

void report(DWORD state) {
    SERVICE_STATUS status = {};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
    status.dwWin32ExitCode = exitCode;
    SetServiceStatus(statusHandle, &status);
}

void WINAPI onControl(DWORD control) {
    if (control == SERVICE_CONTROL_STOP) {
        report(SERVICE_STOP_PENDING);
        watched->stop();
    }
}

void WINAPI serviceMain(DWORD, char**) {
    statusHandle = RegisterServiceCtrlHandlerA(serviceName, onControl);
    report(SERVICE_RUNNING);
    try {
        watched->run();
    } catch (const std::exception& failure) {
        std::cerr << serviceName << ": " << failure.what() << '\n';
        exitCode = ERROR_PROCESS_ABORTED;
    }
    report(SERVICE_STOPPED);
}

}  // namespace

int runService(const char* name, SpoolWatch& watch) {
    serviceName = name;
    watched = &watch;
    std::string nameBuffer = name;
    const SERVICE_TABLE_ENTRYA table[] = {{nameBuffer.data(), serviceMain}, {nullptr, nullptr}};
    if (StartServiceCtrlDispatcherA(table) == 0) {
        throw vek::RuntimeError(
            "the service manager hasn't started this; on a console use 'spoolwatch run'",
            vek::OsError(GetLastError()));
    }
    return exitCode == NO_ERROR ? 0 : 1;
}
