#include "tests/support/tolmar_service.h"

#include "tests/support/files.h"
#include "vek/base/no_copy.h"
#include "vek/exception.h"

namespace support {

namespace {

constexpr char serviceName[] = "tolmar";

class ScHandle : public vek::NoCopy {
  public:
    explicit ScHandle(SC_HANDLE owned) : handle(owned) {}
    ~ScHandle() {
        if (handle != nullptr) {
            CloseServiceHandle(handle);
        }
    }
    SC_HANDLE get() const { return handle; }

  private:
    SC_HANDLE handle;
};

// The handles of the manager and of the service, which is null if there is none.
struct TolmarHandles {
    ScHandle manager{OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)};
    ScHandle service{OpenServiceA(manager.get(), serviceName, SERVICE_ALL_ACCESS)};
};

}  // namespace

void TolmarService::install(const std::string& executable) {
    const ScHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    const std::string quoted = "\"" + executable + "\"";
    const ScHandle service(
        CreateServiceA(manager.get(), serviceName, serviceName, SERVICE_ALL_ACCESS,
                       SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL,
                       quoted.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
    if (service.get() == nullptr) {
        throw vek::OsError(GetLastError());
    }
}

void TolmarService::start() {
    const TolmarHandles tolmar;
    if (StartServiceA(tolmar.service.get(), 0, nullptr) == 0) {
        throw vek::OsError(GetLastError());
    }
}

DWORD TolmarService::askToStop() {
    const TolmarHandles tolmar;
    SERVICE_STATUS status = {};
    return ControlService(tolmar.service.get(), SERVICE_CONTROL_STOP, &status) != 0
               ? 0
               : GetLastError();
}

DWORD TolmarService::state() {
    const TolmarHandles tolmar;
    SERVICE_STATUS status = {};
    return QueryServiceStatus(tolmar.service.get(), &status) != 0 ? status.dwCurrentState : 0;
}

bool TolmarService::waitForState(DWORD wanted, unsigned limitMs) {
    return waitUntil([wanted] { return state() == wanted; }, limitMs);
}

HANDLE TolmarService::openProcess(DWORD access) {
    const TolmarHandles tolmar;
    SERVICE_STATUS_PROCESS status = {};
    DWORD needed = 0;
    if (QueryServiceStatusEx(tolmar.service.get(), SC_STATUS_PROCESS_INFO,
                             reinterpret_cast<BYTE*>(&status), sizeof status, &needed) == 0) {
        return nullptr;
    }
    return status.dwProcessId == 0 ? nullptr : OpenProcess(access, FALSE, status.dwProcessId);
}

void TolmarService::endProcess() {
    if (const HANDLE process = openProcess(SYNCHRONIZE | PROCESS_TERMINATE)) {
        TerminateProcess(process, 1);
        WaitForSingleObject(process, INFINITE);
        CloseHandle(process);
    }
}

bool TolmarService::remove(unsigned limitMs) {
    {
        const TolmarHandles tolmar;
        DeleteService(tolmar.service.get());
    }
    return waitUntil([] { return state() == 0; }, limitMs);
}

}  // namespace support
