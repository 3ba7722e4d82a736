// tolmar::Win32System: the real system. Each operation only makes the call that it is named after.
#pragma once

#include "source/tolmar/system.h"

namespace tolmar {

class Win32System final : public System {
  public:
    // Makes the process unattended: from now on neither a crash nor a missing disk nor an abort of
    // the C runtime shows a message box, which nobody would answer. The process ends, or the call
    // fails. Calls SetErrorMode and _set_error_mode.
    Win32System();

    SC_HANDLE openSCManager(const char* machine, const char* database, DWORD access) override;
    SC_HANDLE openService(SC_HANDLE manager, const char* name, DWORD access) override;
    BOOL queryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) override;
    BOOL controlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status) override;
    BOOL startService(SC_HANDLE service, DWORD argumentCount, const char** arguments) override;
    BOOL closeServiceHandle(SC_HANDLE handle) override;
    DWORD getLastError() override;
    BOOL deleteFile(const char* path) override;
    BOOL moveFile(const char* from, const char* to) override;
    BOOL copyFile(const char* from, const char* to, BOOL failIfExists) override;
    int openEvent(HANDLE* event, const char* name) override;
    int setEvent(HANDLE event) override;
    int waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result) override;
    int closeObject(HANDLE object) override;
    std::string pathInfoGet(const std::string& key, const std::string& file) override;
    void pathInfoInstance() override;
    void pathInfoDestroy() override;
    // With the error mode of this process's caller, which the started program inherits: it has a
    // user who sees its message boxes.
    UINT winExec(const char* commandLine, UINT show) override;
    void sleep(DWORD milliseconds) override;
    [[noreturn]] void exit(int code) override;
    [[noreturn]] void rangeCheckFailure() override;

  private:
    static constexpr UINT unattended =
        SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX;
    const UINT callersErrorMode = SetErrorMode(unattended);
};

}  // namespace tolmar
