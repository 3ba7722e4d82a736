#include "source/tolmar/win32_system.h"

#include <cstdlib>

#include "vek/base/compiler.h"
#include "vek/base/fail_fast.h"
#include "vek/os/objects.h"
#include "vek/pathinfo.h"

namespace tolmar {

Win32System::Win32System() {
    _set_error_mode(_OUT_TO_STDERR);
    vek::disableFaultReport();
}

SC_HANDLE Win32System::openSCManager(const char* machine, const char* database, DWORD access) {
    return OpenSCManagerA(machine, database, access);
}

SC_HANDLE Win32System::openService(SC_HANDLE manager, const char* name, DWORD access) {
    return OpenServiceA(manager, name, access);
}

BOOL Win32System::queryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) {
    return QueryServiceStatus(service, status);
}

BOOL Win32System::controlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status) {
    return ControlService(service, control, status);
}

BOOL Win32System::startService(SC_HANDLE service, DWORD argumentCount, const char** arguments) {
    return StartServiceA(service, argumentCount, arguments);
}

BOOL Win32System::closeServiceHandle(SC_HANDLE handle) {
    return CloseServiceHandle(handle);
}

DWORD Win32System::getLastError() {
    return GetLastError();
}

BOOL Win32System::deleteFile(const char* path) {
    return DeleteFileA(path);
}

BOOL Win32System::moveFile(const char* from, const char* to) {
    return MoveFileA(from, to);
}

BOOL Win32System::copyFile(const char* from, const char* to, BOOL failIfExists) {
    return CopyFileA(from, to, failIfExists);
}

int Win32System::openEvent(HANDLE* event, const char* name) {
    return vek::os::openEvent(event, name);
}

int Win32System::setEvent(HANDLE event) {
    return vek::os::setEvent(event);
}

int Win32System::waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result) {
    return vek::os::waitObject(object, timeoutMs, result);
}

int Win32System::closeObject(HANDLE object) {
    return vek::os::closeObject(object);
}

std::string Win32System::pathInfoGet(const std::string& key, const std::string& file) {
    return vek::PathInfo::instance().get(key, file);
}

void Win32System::pathInfoInstance() {
    vek::PathInfo::instance();
}

void Win32System::pathInfoDestroy() {
    vek::PathInfo::destroy();
}

UINT Win32System::winExec(const char* commandLine, UINT show) {
    SetErrorMode(callersErrorMode);
    const UINT result = WinExec(commandLine, show);
    SetErrorMode(unattended);
    return result;
}

void Win32System::sleep(DWORD milliseconds) {
    Sleep(milliseconds);
}

void Win32System::exit(int code) {
    std::exit(code);
}

void Win32System::rangeCheckFailure() {
    vek::failFast(FAST_FAIL_RANGE_CHECK_FAILURE);
}

}  // namespace tolmar
