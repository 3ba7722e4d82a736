#include "source/tolmar/service_replacement.h"

#include <string>

#include "source/tolmar/helper_directory.h"
#include "vek/log/statement.h"

namespace tolmar {

namespace {

constexpr char serviceName[] = "tolmar";
constexpr char installedFormat[] = "%s/tolmar.exe";
constexpr char keptFormat[] = "%s/tolmar.old";
constexpr char newExecutableKey[] = "QadDataDir";
constexpr char newExecutableFile[] = "tolmar.exe";

constexpr DWORD pollMs = 1000;

constexpr int lastAttempt = 30;  // counted from 0, so there are 31
constexpr DWORD attemptPauseMs = 500;

constexpr DWORD firstWatchMs = 3000;
constexpr int watchRounds = 50;
constexpr DWORD watchRoundMs = 100;

}  // namespace

int ServiceReplacement::run() {
    VEK_LOG(logger, vek::log::DEBUG, "stopping tolmar");
    if (controlService(serviceName, stop) == 0) {
        return 0;
    }
    VEK_LOG(logger, vek::log::DEBUG, "copy backup files");
    backupExecutable();
    VEK_LOG(logger, vek::log::DEBUG, "copy tolmar.exe");
    if (copyNewExecutable() == 0) {
        // Not reached: copyNewExecutable returns 1 or not at all. Here in case that changes.
        restoreExecutable();
        VEK_LOG(logger, vek::log::DEBUG, "copy tolmar.exe failed. exit(2)");
        system.exit(2);
    }
    VEK_LOG(logger, vek::log::DEBUG, "start tolmar");
    controlService(serviceName, start);
    system.sleep(firstWatchMs);
    for (int round = 0; round < watchRounds; ++round) {
        system.sleep(watchRoundMs);
        if (isServiceRunning() != 0) {
            VEK_LOG(logger, vek::log::DEBUG, "tolmar is running -> ok");
            system.exit(0);
        }
    }
    VEK_LOG(logger, vek::log::DEBUG, "restore tolmar");
    restoreExecutable();
    VEK_LOG(logger, vek::log::DEBUG, "start tolmar");
    controlService(serviceName, start);
    system.pathInfoInstance();
    system.pathInfoDestroy();
    VEK_LOG(logger, vek::log::DEBUG, "tolmarhlp with exit 1");
    return 1;
}

int ServiceReplacement::controlService(const char* name, int command) {
    const SC_HANDLE manager = system.openSCManager(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    if (manager == nullptr) {
        system.closeServiceHandle(nullptr);  // deliberate, and without effect
        return 0;
    }
    if (command != stop && command != start) {
        system.closeServiceHandle(manager);
        return 0;
    }
    int result = 0;
    const SC_HANDLE service = system.openService(manager, name, SERVICE_ALL_ACCESS);
    if (service != nullptr) {
        result = command == start ? startAndWait(service) : stopAndWait(service);
    }
    system.closeServiceHandle(service);  // deliberately also when it is null
    system.closeServiceHandle(manager);
    return result;
}

int ServiceReplacement::startAndWait(SC_HANDLE service) {
    system.startService(service, 0, nullptr);
    // Without a limit, deliberately: a service that stays stopped keeps the helper here.
    SERVICE_STATUS status = {};
    do {
        system.sleep(pollMs);
        if (system.queryServiceStatus(service, &status) == 0) {
            return 0;
        }
    } while (status.dwCurrentState == SERVICE_START_PENDING ||
             status.dwCurrentState == SERVICE_STOPPED);
    return 1;
}

int ServiceReplacement::stopAndWait(SC_HANDLE service) {
    SERVICE_STATUS status = {};
    const int controlled = system.controlService(service, SERVICE_CONTROL_STOP, &status);
    if (controlled == 0) {
        return system.getLastError() == ERROR_SERVICE_NOT_ACTIVE ? 1 : 0;
    }
    // Without a limit, deliberately: a service that doesn't finish stopping keeps the helper here.
    do {
        system.sleep(pollMs);
        if (system.queryServiceStatus(service, &status) == 0) {
            return controlled;
        }
    } while (status.dwCurrentState == SERVICE_STOP_PENDING);
    return 1;
}

int ServiceReplacement::startService() {
    return controlService(serviceName, start);
}

// Repeats `attempt` until it succeeds, with a pause after each, also after the successful one. The
// last attempt ends the process even if it succeeds, deliberately.
template <class Attempt>
void ServiceReplacement::tryUntilDone(Attempt attempt) {
    bool done = false;
    for (int i = 0; !done; ++i) {
        done = attempt() != 0;
        if (i == lastAttempt) {
            system.exit(1);
        }
        system.sleep(attemptPauseMs);
    }
}

int ServiceReplacement::backupExecutable() {
    const PathBuffer installed = helperPath(installedFormat);
    const PathBuffer kept = helperPath(keptFormat);
    system.deleteFile(kept.data());
    tryUntilDone([&] { return system.moveFile(installed.data(), kept.data()); });
    return 1;
}

int ServiceReplacement::copyNewExecutable() {
    const std::string newExecutable = system.pathInfoGet(newExecutableKey, newExecutableFile);
    const PathBuffer installed = helperPath(installedFormat);
    tryUntilDone([&] { return system.copyFile(newExecutable.c_str(), installed.data(), FALSE); });
    return 1;
}

int ServiceReplacement::restoreExecutable() {
    const PathBuffer installed = helperPath(installedFormat);
    const PathBuffer kept = helperPath(keptFormat);
    tryUntilDone([&] { return system.moveFile(kept.data(), installed.data()); });
    return 1;
}

int ServiceReplacement::isServiceRunning() {
    const SC_HANDLE manager = system.openSCManager(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    if (manager == nullptr) {
        return 0;
    }
    const SC_HANDLE service = system.openService(manager, serviceName, SERVICE_ALL_ACCESS);
    if (service == nullptr) {
        system.closeServiceHandle(manager);
        return 0;
    }
    SERVICE_STATUS status = {};
    // The result is deliberately ignored: the status of a failed query is not SERVICE_RUNNING.
    system.queryServiceStatus(service, &status);
    system.closeServiceHandle(service);
    system.closeServiceHandle(manager);
    return status.dwCurrentState == SERVICE_RUNNING ? 1 : 0;
}

}  // namespace tolmar
