// The real system behind the helper. It adds nothing to the calls that it passes on.
#pragma once

#include "source/tolmar/system.h"

namespace tolmar {

class Win32System final : public System {
  public:
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
    UINT winExec(const char* commandLine, UINT show) override;
    void sleep(DWORD milliseconds) override;
    [[noreturn]] void exit(int code) override;
    [[noreturn]] void rangeCheckFailure() override;
};

}  // namespace tolmar
