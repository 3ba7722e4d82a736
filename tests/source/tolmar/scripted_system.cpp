#include "tests/source/tolmar/scripted_system.h"

#include <sstream>
#include <utility>

#include "vek/pathinfo.h"

namespace tolmar::test {

namespace {

const char* textOrNull(const char* text) {
    return text == nullptr ? "null" : text;
}

struct Hex {
    DWORD value;
    friend std::ostream& operator<<(std::ostream& out, Hex hex) {
        return out << "0x" << std::uppercase << std::hex << hex.value << std::dec;
    }
};

}  // namespace

template <class... Arguments>
void ScriptedSystem::record(const char* name, const Arguments&... arguments) {
    if (before) {
        before(name);
    }
    if (keepTrace) {
        std::ostringstream text;
        [[maybe_unused]] const char* separator = "";
        text << name << '(';
        ((text << std::exchange(separator, ", ") << arguments), ...);
        text << ')';
        trace.push_back(text.str());
    }
}

template <class... Arguments>
bool ScriptedSystem::failing(const char* name, const Arguments&... arguments) {
    record(name, arguments...);
    const int index = failableCalls++;
    const int nth = countOf[name]++;
    return fails && fails(name, index, nth);
}

void* ScriptedSystem::makeHandle(const std::string& name) {
    void* handle = reinterpret_cast<void*>(++nextHandle);
    handleNames[handle] = name;
    openHandles.insert(handle);
    return handle;
}

const char* ScriptedSystem::handleName(const void* handle) const {
    const auto found = handleNames.find(handle);
    return handle == nullptr            ? "null"
           : found == handleNames.end() ? "stray"
                                        : found->second.c_str();
}

SC_HANDLE ScriptedSystem::openSCManager(const char* machine, const char* database, DWORD access) {
    if (failing("OpenSCManagerA", textOrNull(machine), textOrNull(database), Hex{access})) {
        return nullptr;
    }
    return static_cast<SC_HANDLE>(makeHandle("manager"));
}

SC_HANDLE ScriptedSystem::openService(SC_HANDLE manager, const char* name, DWORD access) {
    if (failing("OpenServiceA", handleName(manager), name, Hex{access}) || !serviceExists) {
        return nullptr;
    }
    return static_cast<SC_HANDLE>(makeHandle("service"));
}

BOOL ScriptedSystem::queryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) {
    if (failing("QueryServiceStatus", handleName(service))) {
        if (failedQueryState != 0) {
            status->dwCurrentState = failedQueryState;
        }
        return FALSE;
    }
    status->dwCurrentState = states.front();
    if (states.size() > 1) {
        states.pop_front();
    }
    return TRUE;
}

BOOL ScriptedSystem::controlService(SC_HANDLE service, DWORD control, SERVICE_STATUS*) {
    if (failing("ControlService", handleName(service), control)) {
        return FALSE;
    }
    switch (states.front()) {
        case SERVICE_STOPPED:
            lastError = ERROR_SERVICE_NOT_ACTIVE;
            return FALSE;
        case SERVICE_START_PENDING:
            lastError = ERROR_INVALID_SERVICE_CONTROL;
            return FALSE;
        case SERVICE_STOP_PENDING:
            lastError = ERROR_SERVICE_CANNOT_ACCEPT_CTRL;
            return FALSE;
    }
    states = statesAfterStop;
    if (states.back() != SERVICE_RUNNING) {
        runningVersion = "";
    }
    return TRUE;
}

BOOL ScriptedSystem::startService(SC_HANDLE service, DWORD argumentCount, const char** arguments) {
    if (failing("StartServiceA", handleName(service), argumentCount,
                arguments == nullptr ? "null" : "arguments") ||
        states.front() != SERVICE_STOPPED) {
        return FALSE;
    }
    const auto image = files.find(installed);
    if (image == files.end() || image->second == "part") {
        return FALSE;
    }
    states = image->second == "new" ? statesAfterStartOfNew : statesAfterStartOfOld;
    runningVersion = states.back() == SERVICE_RUNNING ? image->second : "";
    return TRUE;
}

BOOL ScriptedSystem::closeServiceHandle(SC_HANDLE handle) {
    if (failing("CloseServiceHandle", handleName(handle)) || handle == nullptr) {
        return FALSE;
    }
    openHandles.erase(handle);
    return TRUE;
}

DWORD ScriptedSystem::getLastError() {
    record("GetLastError");
    return lastError;
}

BOOL ScriptedSystem::deleteFile(const char* path) {
    return !failing("DeleteFileA", path) && readOnly.count(path) == 0 && files.erase(path) != 0;
}

BOOL ScriptedSystem::moveFile(const char* from, const char* to) {
    if (failing("MoveFileA", from, to) || files.count(to) != 0 || files.count(from) == 0) {
        return FALSE;
    }
    files[to] = files[from];
    files.erase(from);
    if (readOnly.erase(from) != 0) {
        readOnly.insert(to);
    }
    return TRUE;
}

BOOL ScriptedSystem::copyFile(const char* from, const char* to, BOOL failIfExists) {
    if (failing("CopyFileA", from, to, failIfExists) || files.count(from) == 0 ||
        readOnly.count(to) != 0) {
        if (copyLeavesPart) {
            files[to] = "part";
        }
        return FALSE;
    }
    files[to] = files[from];
    if (readOnly.count(from) != 0) {
        readOnly.insert(to);
    }
    return TRUE;
}

int ScriptedSystem::openEvent(HANDLE* event, const char* name) {
    if (failing("openEvent", name)) {
        return 0;
    }
    *event = makeHandle(name);
    return 1;
}

int ScriptedSystem::setEvent(HANDLE event) {
    return failing("setEvent", handleName(event)) ? 0 : 1;
}

int ScriptedSystem::waitObject(HANDLE object, std::uint32_t timeoutMs, std::uint32_t* result) {
    if (failing("waitObject", handleName(object), timeoutMs)) {
        return 0;
    }
    *result = waitResult;
    return 1;
}

int ScriptedSystem::closeObject(HANDLE object) {
    return failing("closeObject", handleName(object)) ? 0 : 1;
}

std::string ScriptedSystem::pathInfoGet(const std::string& key, const std::string& file) {
    if (failing("PathInfo::get", key, file)) {
        throw vek::PathInfo::Error("scripted failure");
    }
    return fresh;
}

void ScriptedSystem::pathInfoInstance() {
    // Can't fail: the procedure asks for the table only after a good look-up, which has made it.
    record("PathInfo::instance");
}

void ScriptedSystem::pathInfoDestroy() {
    record("PathInfo::destroy");
}

UINT ScriptedSystem::winExec(const char* commandLine, UINT show) {
    return failing("WinExec", commandLine, show) ? 2 : winExecResult;
}

void ScriptedSystem::sleep(DWORD milliseconds) {
    polls = milliseconds == 1000 ? polls + 1 : 0;
    if (polls > pollLimit) {
        throw NeverEnds{};
    }
    record("Sleep", milliseconds);
}

void ScriptedSystem::exit(int code) {
    record("exit", code);
    throw Exited{code};
}

void ScriptedSystem::rangeCheckFailure() {
    record("rangeCheckFailure");
    throw RangeCheckFailed{};
}

LogRecorder::LogRecorder(vek::log::Logger& recordedLogger, Trace& target)
    : logger(recordedLogger), trace(target), ownBuffer(logger.stream().rdbuf(this)) {
    logger.releaseStream();
}

LogRecorder::~LogRecorder() {
    logger.stream().rdbuf(ownBuffer);
    logger.releaseStream();
}

std::streamsize LogRecorder::xsputn(const char* text, std::streamsize length) {
    // The logger empties its buffer ahead of each statement: an empty one is the start of a line.
    if (logger.streamText().empty()) {
        trace.push_back("log: ");
    }
    trace.back().append(text, static_cast<std::size_t>(length));
    return ownBuffer->sputn(text, length);
}

LogRecorder::int_type LogRecorder::overflow(int_type character) {
    const char ch = traits_type::to_char_type(character);
    return xsputn(&ch, 1) == 1 ? character : traits_type::eof();
}

}  // namespace tolmar::test
