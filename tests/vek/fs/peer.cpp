// A second process for the tests of files. A GUI program, so that it can get a console of its own.
//
//   fs_peer lock FILE exclusive|shared EVENTS   locks FILE until "release" is set
//   fs_peer try FILE exclusive|shared           exit code 0 if the lock is free, 1 if not
//   fs_peer program-name NAME                   exit code 0 if this program's name is NAME
//   fs_peer program-path PATH                   exit code 0 if this program's path is PATH
//   fs_peer flush-console                       exit code 0 if flushing a console gives false
//
// EVENTS begins the names of three events that the caller has made: "trying" is set ahead of the
// lock, "locked" behind it, and "release" is waited for. Exit code 9 for anything that fails.
#include <cstdlib>
#include <string>

#include "vek/exception.h"
#include "vek/fs/lock.h"
#include "vek/fs/program_path.h"
#include "vek/fs/stream_file.h"

namespace {

constexpr int refused = 1;
constexpr int failed = 9;
constexpr DWORD longestHoldMs = 60000;

HANDLE event(const std::string& name) {
    const HANDLE opened = OpenEventA(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, name.c_str());
    if (opened == nullptr) {
        throw vek::OsError(GetLastError());
    }
    return opened;  // until this process ends
}

int lockUntilReleased(HANDLE file, bool exclusive, const std::string& events) {
    vek::fs::Lock lock(file);
    const HANDLE release = event(events + "release");
    const HANDLE locked = event(events + "locked");
    SetEvent(event(events + "trying"));
    if (exclusive) {
        lock.lockExclusive();
    } else {
        lock.lockShared();
    }
    SetEvent(locked);
    return WaitForSingleObject(release, longestHoldMs) == WAIT_OBJECT_0 ? 0 : failed;
}

int flushConsole() {
    AllocConsole();
    vek::fs::StreamFile console;
    console.adopt(CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                              nullptr));
    if (!console.isOpen()) {
        return failed;
    }
    return console.flush() ? refused : 0;
}

int run(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "program-name" && argc > 2) {
        return vek::programName() == argv[2] ? 0 : refused;
    }
    if (command == "program-path" && argc > 2) {
        return vek::programPath() == argv[2] ? 0 : refused;
    }
    if (command == "flush-console") {
        return flushConsole();
    }
    if (argc < 4) {
        return failed;
    }
    const bool exclusive = std::string(argv[3]) == "exclusive";
    vek::fs::File file;
    file.open(argv[2], vek::fs::Access::readWrite);
    if (command == "lock" && argc > 4) {
        return lockUntilReleased(file.nativeHandle(), exclusive, argv[4]);
    }
    return vek::fs::lockFile(file.nativeHandle(), exclusive, true) ? 0 : refused;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    try {
        return run(__argc, __argv);
    } catch (const vek::Exception&) {
        return failed;
    }
}
