// A scripted system that the tests run the helper's two modes on: a small model of a machine with
// one service and three files. It records every call with its arguments and can let any of them
// fail.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <streambuf>
#include <string>
#include <vector>

#include "source/tolmar/system.h"
#include "vek/log/logger.h"

namespace tolmar::test {

// How a run left the procedure, other than by returning. None is a std::exception, so the helper
// catches none.
struct Exited {
    int code;
};
struct RangeCheckFailed {};
struct NeverEnds {};

using Trace = std::vector<std::string>;

class ScriptedSystem final : public System {
  public:
    // The paths of the model, for the directory "D".
    static constexpr char installed[] = "D/tolmar.exe";
    static constexpr char kept[] = "D/tolmar.old";
    static constexpr char fresh[] = "N\\tolmar.exe";

    // Path to content: "old" is the version before the update, "new" the update, "previous" the one
    // before "old", and "part" what a copy that failed half way has left.
    std::map<std::string, std::string> files = {
        {installed, "old"}, {kept, "previous"}, {fresh, "new"}};
    // Those of them that are read-only: they can be moved, and neither deleted nor written. A copy
    // of one is read-only too.
    std::set<std::string> readOnly;

    bool serviceExists = true;
    // The states after a stop and after a start, query by query; the last value stays. After an
    // accepted stop the old version runs on if that is SERVICE_RUNNING. A start fails unless the
    // state is SERVICE_STOPPED.
    std::deque<DWORD> statesAfterStop = {SERVICE_STOPPED};
    std::deque<DWORD> statesAfterStartOfNew = {SERVICE_RUNNING};
    std::deque<DWORD> statesAfterStartOfOld = {SERVICE_RUNNING};
    // The state now, and what follows.
    std::deque<DWORD> states = {SERVICE_RUNNING};
    // The version that runs in the end, once all states have passed; empty for none.
    std::string runningVersion = "old";

    // What a failing query writes into the status all the same; 0 for nothing.
    DWORD failedQueryState = 0;

    // GetLastError after a failed ControlService.
    DWORD lastError = ERROR_ACCESS_DENIED;
    // What WaitForSingleObject gives if it doesn't fail.
    std::uint32_t waitResult = WAIT_OBJECT_0;
    UINT winExecResult = 33;
    // A failing copy leaves a part of the file.
    bool copyLeavesPart = false;
    // Called ahead of each call, with its name; may change the model.
    std::function<void(const std::string& call)> before;

    // Decides whether the call `name` fails: `index` counts all calls that can fail, `nth` those of
    // this name, both from 0.
    std::function<bool(const std::string& name, int index, int nth)> fails;

    // A run that polls the service's state more often than this, without doing anything else, never
    // ends.
    int pollLimit = 25;

    // Every call with its arguments, unless `keepTrace` is off, as for runs by the ten thousand.
    Trace trace;
    bool keepTrace = true;
    int failableCalls = 0;
    std::map<std::string, int, std::less<>> countOf;

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

    // Handles still open. The helper leaves none of the service manager's open, whatever fails.
    std::set<const void*> openHandles;

  private:
    // Records the call `name` with its arguments.
    template <class... Arguments>
    void record(const char* name, const Arguments&... arguments);
    // Records a call that can fail. Returns whether it does.
    template <class... Arguments>
    bool failing(const char* name, const Arguments&... arguments);
    void* makeHandle(const std::string& name);
    const char* handleName(const void* handle) const;

    std::map<const void*, std::string> handleNames;
    std::uintptr_t nextHandle = 0;
    int polls = 0;
};

// Writes the texts of a logger's statements into a trace, as "log: text", while it lives. It sits
// between the logger's stream and its buffer, so the logger itself works unchanged.
class LogRecorder final : public std::streambuf {
  public:
    LogRecorder(vek::log::Logger& recordedLogger, Trace& target);
    ~LogRecorder() override;
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

  protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override;
    int_type overflow(int_type character) override;

  private:
    vek::log::Logger& logger;
    Trace& trace;
    std::streambuf* ownBuffer;
};

}  // namespace tolmar::test
