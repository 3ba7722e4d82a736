// tolmar::System: the system calls of the helper's two modes, as an interface that tests replace.
// Each operation has the arguments and the result of the call that it is named after.
#pragma once

#include <cstdint>
#include <string>

#include "vek/base/windows.h"

namespace tolmar {

class System {
  public:
    virtual ~System() = default;

    // The service control manager.
    virtual SC_HANDLE openSCManager(const char* machine, const char* database, DWORD access) = 0;
    virtual SC_HANDLE openService(SC_HANDLE manager, const char* name, DWORD access) = 0;
    virtual BOOL queryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) = 0;
    virtual BOOL controlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status) = 0;
    virtual BOOL startService(SC_HANDLE service, DWORD argumentCount, const char** arguments) = 0;
    virtual BOOL closeServiceHandle(SC_HANDLE handle) = 0;
    virtual DWORD getLastError() = 0;

    // Files.
    virtual BOOL deleteFile(const char* path) = 0;
    virtual BOOL moveFile(const char* from, const char* to) = 0;
    virtual BOOL copyFile(const char* from, const char* to, BOOL failIfExists) = 0;

    // Events, by the flat layer of the framework, which returns 1 for success.
    virtual int openEvent(HANDLE* event, const char* name) = 0;
    virtual int setEvent(HANDLE event) = 0;
    virtual int waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result) = 0;
    virtual int closeObject(HANDLE object) = 0;

    // The table of named directories. The first two throw vek::PathInfo::Error.
    virtual std::string pathInfoGet(const std::string& key, const std::string& file) = 0;
    virtual void pathInfoInstance() = 0;
    virtual void pathInfoDestroy() = 0;

    // The process.
    virtual UINT winExec(const char* commandLine, UINT show) = 0;
    virtual void sleep(DWORD milliseconds) = 0;
    [[noreturn]] virtual void exit(int code) = 0;
    // Ends the process at once, as the runtime does when an index is out of range.
    [[noreturn]] virtual void rangeCheckFailure() = 0;
};

}  // namespace tolmar
