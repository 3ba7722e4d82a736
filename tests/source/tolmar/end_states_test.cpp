// Lets the calls of the helper fail, one by one, in pairs, and for good, and compares every state
// that a run can end in with the tables of README.md: no run may end in a state that isn't there,
// and no row may be unreachable.
#include <cstring>
#include <iostream>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "source/tolmar/run_helper.h"
#include "tests/source/tolmar/document_table.h"
#include "tests/source/tolmar/scripted_system.h"
#include "vek/log/configurator.h"
#include "vek/pal.h"

namespace {

using tolmar::test::Exited;
using tolmar::test::NeverEnds;
using tolmar::test::ScriptedSystem;

// The cells of a row, joined by " | ".
using EndState = std::string;
using EndStates = std::set<EndState>;
using Fails = std::function<bool(const std::string& name, int index, int nth)>;

// The first `columns` cells of each row of the table of README.md whose header starts with
// `header`.
EndStates documented(const std::string& header, std::size_t columns) {
    EndStates states;
    for (const tolmar::test::Row& cells : tolmar::test::rowsOf(README_PATH, header)) {
        EXPECT_GE(cells.size(), columns) << header;
        EndState state;
        for (std::size_t i = 0; i < columns && i < cells.size(); ++i) {
            state += (i == 0 ? "" : " | ") + cells[i];
        }
        EXPECT_TRUE(states.insert(state).second) << "twice in README.md: " << state;
    }
    return states;
}

// The log without its worker, which would be a thread for each of tens of thousands of runs.
struct LogWithoutWorker {
    explicit LogWithoutWorker(TCLAP::CmdLineInterface*) {
        vek::log::Manager::instance().setDefaultLevel(vek::log::WARN);
    }
    void configure(const std::string&) {}
};

// The log of a helper that fails at its start: for a default level that is none, for a logging.conf
// that can't be opened, and for a directory above the helper that can't be listed.
struct LogThatFails : LogWithoutWorker {
    using LogWithoutWorker::LogWithoutWorker;
    void configure(const std::string&) { throw vek::RuntimeError("scripted failure"); }
};

// The log of a helper whose logging.conf sets wait_log_application, without a client.
struct LogThatWaits : LogWithoutWorker {
    using LogWithoutWorker::LogWithoutWorker;
    void configure(const std::string&) {
        std::cerr << "waiting";
        throw NeverEnds{};
    }
};

template <class Configurator>
int runWith(ScriptedSystem& system, const char* tail) {
    return tolmar::runHelper<vek::VekPal, Configurator>(system, tail);
}

enum class LogStart { works, fails, waitsForAClient };

// One kind of machine to update.
struct Machine {
    const char* name;
    std::function<void(ScriptedSystem&)> prepare;
    LogStart logStart = LogStart::works;
    // A client of the helper's log service keeps the service from ending, and so the helper, where
    // it waits for that: where it returns, in contrast to an exit within the procedure.
    bool endHeldUp = false;

    friend void PrintTo(const Machine& machine, std::ostream* out) { *out << machine.name; }
};

int exitCodeOf(ScriptedSystem& system, const Machine& machine, const char* tail) {
    switch (machine.logStart) {
        case LogStart::fails:
            return runWith<LogThatFails>(system, tail);
        case LogStart::waitsForAClient:
            return runWith<LogThatWaits>(system, tail);
        case LogStart::works:
            break;
    }
    // A run in which nothing fails has its real locals.
    return system.fails ? runWith<LogWithoutWorker>(system, tail)
                        : runWith<vek::log::Configurator>(system, tail);
}

// How a run left the process: the code and the message, as in the tables.
std::string runToItsEnd(ScriptedSystem& system, const Machine& machine, const char* tail) {
    // The helper's std::cerr, caught in memory: there are tens of thousands of runs.
    std::stringbuf message;
    std::streambuf* const ownBuffer = std::cerr.rdbuf(&message);
    std::string end;
    try {
        end = std::to_string(exitCodeOf(system, machine, tail));
        if (machine.endHeldUp) {
            // The log is stopped ahead of the message.
            message.str("");
            end = "never ends";
        }
    } catch (const Exited& exited) {
        end = std::to_string(exited.code);
    } catch (const NeverEnds&) {
        end = "never ends";
    }
    std::cerr.rdbuf(ownBuffer);
    return message.str().empty() ? end : end + ", message";
}

std::string contentOf(const ScriptedSystem& system, const char* path) {
    const auto file = system.files.find(path);
    return file == system.files.end() ? "none" : file->second;
}

EndState replaceEnd(const Machine& machine, const Fails& fails, int* failableCalls = nullptr) {
    ScriptedSystem system;
    system.keepTrace = false;
    machine.prepare(system);
    const std::string runningBefore = system.runningVersion;
    system.fails = fails;
    const std::string end = runToItsEnd(system, machine, "D");
    if (failableCalls != nullptr) {
        *failableCalls = system.failableCalls;
    }
    if (system.countOf["DeleteFileA"] == 0 && system.runningVersion == runningBefore &&
        system.states.size() == 1) {
        return end + " | as before | as before | as before";
    }
    const std::string kept = contentOf(system, ScriptedSystem::kept);
    return end + " | " + contentOf(system, ScriptedSystem::installed) + " | " +
           (kept == "previous" ? "as before" : kept) + " | " +
           (system.runningVersion.empty() ? "not running" : "runs " + system.runningVersion);
}

void letNewVersionFallAndGo(ScriptedSystem& system) {
    system.statesAfterStartOfNew = {SERVICE_STOP_PENDING, SERVICE_STOPPED};
    system.before = [&system](const std::string& call) {
        if (call == "Sleep" && system.countOf["OpenSCManagerA"] > 5 &&
            contentOf(system, ScriptedSystem::installed) == "new") {
            system.files.erase(ScriptedSystem::installed);
        }
    };
}

const Machine machines[] = {
    {"GoodUpdate", [](ScriptedSystem&) {}},
    {"SlowService",
     [](ScriptedSystem& system) {
         system.statesAfterStop = {SERVICE_STOP_PENDING, SERVICE_STOPPED};
         system.statesAfterStartOfNew = {SERVICE_START_PENDING, SERVICE_RUNNING};
     }},
    {"ServiceNotActive",
     [](ScriptedSystem& system) {
         system.states = {SERVICE_STOPPED};
         system.runningVersion = "";
     }},
    {"ExecutableMovedAside",
     [](ScriptedSystem& system) {
         system.files.erase(ScriptedSystem::installed);
         system.files[ScriptedSystem::kept] = "old";
         system.states = {SERVICE_STOPPED};
         system.runningVersion = "";
     }},
    {"NothingKept", [](ScriptedSystem& system) { system.files.erase(ScriptedSystem::kept); }},
    {"ServiceAbsent", [](ScriptedSystem& system) { system.serviceExists = false; }},
    {"NeverStops", [](ScriptedSystem& system) { system.statesAfterStop = {SERVICE_STOP_PENDING}; }},
    {"NeverStarts",
     [](ScriptedSystem& system) { system.statesAfterStartOfNew = {SERVICE_STOPPED}; }},
    {"FallsOver",
     [](ScriptedSystem& system) {
         system.statesAfterStartOfNew = {SERVICE_STOP_PENDING, SERVICE_STOPPED};
     }},
    {"NewExecutableMissing",
     [](ScriptedSystem& system) { system.files.erase(ScriptedSystem::fresh); }},
    {"CopyLeavesAPart", [](ScriptedSystem& system) { system.copyLeavesPart = true; }},
    {"CopyAlwaysLeavesAPart",
     [](ScriptedSystem& system) {
         system.copyLeavesPart = true;
         system.files.erase(ScriptedSystem::fresh);
     }},
    {"FallsOverAndGoes", letNewVersionFallAndGo},
    {"FallsOverAndGoesAndOldOneHangs",
     [](ScriptedSystem& system) {
         letNewVersionFallAndGo(system);
         system.statesAfterStartOfOld = {SERVICE_START_PENDING};
     }},
    {"StillStarting",
     [](ScriptedSystem& system) {
         system.states = {SERVICE_START_PENDING};
         system.runningVersion = "";
     }},
    {"StillStopping",
     [](ScriptedSystem& system) {
         system.states = {SERVICE_STOP_PENDING};
         system.runningVersion = "";
     }},
    {"AcceptsTheStopAndRunsOn",
     [](ScriptedSystem& system) { system.statesAfterStop = {SERVICE_RUNNING}; }},
    // Runs for the query after the stop, after the start, and for the first of the watch.
    {"AcceptsTheStopAndStopsLate",
     [](ScriptedSystem& system) {
         system.statesAfterStop = {SERVICE_RUNNING, SERVICE_RUNNING, SERVICE_RUNNING,
                                   SERVICE_STOPPED};
     }},
    {"AcceptsTheStopAndStopsWhileItIsWatched",
     [](ScriptedSystem& system) {
         system.statesAfterStop = {SERVICE_RUNNING, SERVICE_RUNNING, SERVICE_STOP_PENDING,
                                   SERVICE_STOPPED};
     }},
    {"ReadOnlyExecutableKept",
     [](ScriptedSystem& system) {
         system.readOnly = {ScriptedSystem::installed, ScriptedSystem::kept, ScriptedSystem::fresh};
     }},
    {"HelperCannotStart", [](ScriptedSystem&) {}, LogStart::fails},
    {"HelperWaitsForALogClient", [](ScriptedSystem&) {}, LogStart::waitsForAClient},
    {"ServiceAbsentAndEndHeldUp", [](ScriptedSystem& system) { system.serviceExists = false; },
     LogStart::works, true},
    {"EndHeldUp", [](ScriptedSystem&) {}, LogStart::works, true},
    {"AcceptsTheStopAndRunsOnAndEndHeldUp",
     [](ScriptedSystem& system) { system.statesAfterStop = {SERVICE_RUNNING}; }, LogStart::works,
     true},
    {"FallsOverAndGoesAndEndHeldUp", letNewVersionFallAndGo, LogStart::works, true},
};

constexpr char replaceHeader[] = "| Exit code | `tolmar.exe`";
constexpr std::size_t replaceColumns = 4;

const char* const replaceCalls[] = {
    "OpenSCManagerA",     "OpenServiceA", "QueryServiceStatus", "ControlService", "StartServiceA",
    "CloseServiceHandle", "DeleteFileA",  "MoveFileA",          "CopyFileA",      "PathInfo::get"};

// Lets one kind of call fail from some time on for good, or 30 times, after which it works again.
// Passes each end to `take`.
template <class Take>
void failKindsOfCalls(const Machine& machine, Take take) {
    for (const std::string call : replaceCalls) {
        for (int start = 0; start < 8; ++start) {
            for (const int times : {30, 1000000}) {
                take(replaceEnd(machine,
                                [=](const std::string& name, int, int nth) {
                                    return name == call && nth >= start && nth < start + times;
                                }),
                     call + ", " + std::to_string(times) + " times");
            }
        }
    }
}

// True for a call in the midst of the 50 checks whether the service runs, which are all alike: what
// fails in the first and in the last of them is enough. `calls` is the number of calls of the run.
bool isInTheMidst(int call, int calls) {
    return call >= 30 && call < calls - 40;
}

class EndStatesOfReplaceMode : public testing::TestWithParam<Machine> {};

TEST_P(EndStatesOfReplaceMode, StandInTheReadmeWhicheverCallsFail) {
    const Machine& machine = GetParam();
    EndStates known = documented(replaceHeader, replaceColumns);
    const auto take = [&](const EndState& state, const std::string& failed) {
        // Reports each missing state once.
        EXPECT_FALSE(known.insert(state).second) << state << ", failing " << failed;
    };
    int calls = 0;
    take(replaceEnd(machine, nullptr, &calls), "nothing");
    for (int first = 0; first < calls; ++first) {
        if (isInTheMidst(first, calls)) {
            continue;
        }
        // Each call fails in turn, and then with each later one. A run that fails has calls of its
        // own, so the second of a pair is counted in the run in which the first has failed.
        int callsThen = 0;
        const std::string name = "call " + std::to_string(first);
        take(replaceEnd(
                 machine, [=](const std::string&, int index, int) { return index == first; },
                 &callsThen),
             name);
        for (int second = first + 1; second < callsThen; ++second) {
            if (isInTheMidst(second, callsThen)) {
                continue;
            }
            take(replaceEnd(machine, [=](const std::string&, int index,
                                         int) { return index == first || index == second; }),
                 name + " and " + std::to_string(second));
        }
    }
    failKindsOfCalls(machine, take);
}

INSTANTIATE_TEST_SUITE_P(Machines, EndStatesOfReplaceMode, testing::ValuesIn(machines),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(EndStatesInTheReadme, AreAllReachable) {
    EndStates unreached = documented(replaceHeader, replaceColumns);
    ASSERT_FALSE(unreached.empty());
    for (const Machine& machine : machines) {
        unreached.erase(replaceEnd(machine, nullptr));
        failKindsOfCalls(
            machine, [&](const EndState& state, const std::string&) { unreached.erase(state); });
    }
    EXPECT_EQ(unreached, EndStates{});
}

// How a restart of the GUI ends whose wait for the peer gives `waitResult`. `calls` becomes the
// number of calls that could have failed.
EndState guiEnd(const Machine& machine, std::uint32_t waitResult, const Fails& fails, int* calls) {
    ScriptedSystem system;
    system.waitResult = waitResult;
    system.fails = fails;
    const std::string end = runToItsEnd(system, machine, "-restartgui D");
    const bool started =
        system.countOf["WinExec"] == 1 && !(fails && fails("WinExec", system.failableCalls - 1, 0));
    *calls = system.failableCalls;
    return end + " | " + (started ? "started" : "not started");
}

TEST(EndStatesOfGuiMode, AreTheRowsOfTheReadme) {
    const EndStates rows = documented("| Exit code | GUI", 2);
    ASSERT_FALSE(rows.empty());
    EndStates reached;
    const auto failCalls = [&](const Machine& machine, std::uint32_t waitResult) {
        int calls = 0;
        reached.insert(guiEnd(machine, waitResult, nullptr, &calls));
        for (int first = 0; first < calls; ++first) {
            int callsThen = 0;
            reached.insert(guiEnd(
                machine, waitResult,
                [=](const std::string&, int index, int) { return index == first; }, &callsThen));
            for (int second = first + 1; second < callsThen; ++second) {
                int ignored = 0;
                reached.insert(guiEnd(
                    machine, waitResult,
                    [=](const std::string&, int index, int) {
                        return index == first || index == second;
                    },
                    &ignored));
            }
        }
    };
    const Machine guiMachines[] = {{"Peer", nullptr},
                                   {"StartFails", nullptr, LogStart::fails},
                                   {"WaitsForALogClient", nullptr, LogStart::waitsForAClient},
                                   {"EndHeldUp", nullptr, LogStart::works, true}};
    for (const Machine& machine : guiMachines) {
        failCalls(machine, WAIT_OBJECT_0);
        failCalls(machine, WAIT_TIMEOUT);
    }
    EXPECT_EQ(reached, rows);
}

TEST(HandlesOfTheServiceManager, AreAllClosedWhateverFails) {
    for (const Machine& machine : machines) {
        for (int failed = -1; failed < 60; ++failed) {
            ScriptedSystem system;
            machine.prepare(system);
            system.fails = [=](const std::string& name, int index, int) {
                return index == failed && name != "CloseServiceHandle";
            };
            if (!runToItsEnd(system, machine, "D").starts_with("never ends")) {
                EXPECT_TRUE(system.openHandles.empty()) << machine.name << ", failing " << failed;
            }
        }
    }
}

// What several calls of the helper, one after the other, make of the old version.

std::string endOfUpdate(ScriptedSystem& system) {
    return runToItsEnd(system, machines[0], "D");
}

TEST(ReadOnlyNewExecutable, IsTakenTwiceAndTheThirdUpdateLeavesTheServiceDown) {
    ScriptedSystem system;
    system.readOnly = {ScriptedSystem::fresh};
    EXPECT_EQ(endOfUpdate(system), "0");
    EXPECT_EQ(endOfUpdate(system), "0");
    EXPECT_EQ(endOfUpdate(system), "1");
    EXPECT_EQ(system.runningVersion, "");
    EXPECT_EQ(system.readOnly.count(ScriptedSystem::kept), 1u);
}

bool holdsOldVersion(const ScriptedSystem& system) {
    return contentOf(system, ScriptedSystem::installed) == "old" ||
           contentOf(system, ScriptedSystem::kept) == "old";
}

TEST(LastGoodVersion, IsLostByASecondCallAfterTheNewOneFailed) {
    ScriptedSystem system;
    system.statesAfterStartOfNew = {SERVICE_STOP_PENDING, SERVICE_STOPPED};
    EXPECT_EQ(endOfUpdate(system), "1");
    EXPECT_TRUE(holdsOldVersion(system));
    EXPECT_EQ(endOfUpdate(system), "1");
    EXPECT_FALSE(holdsOldVersion(system));
    EXPECT_EQ(contentOf(system, ScriptedSystem::kept), "new");
}

TEST(LastGoodVersion, IsLostByASecondCallAfterACopyThatLeftAPart) {
    ScriptedSystem system;
    system.copyLeavesPart = true;
    system.files.erase(ScriptedSystem::fresh);
    EXPECT_EQ(endOfUpdate(system), "1");
    EXPECT_TRUE(holdsOldVersion(system));
    system.files[ScriptedSystem::fresh] = "new";
    EXPECT_EQ(endOfUpdate(system), "0");
    EXPECT_FALSE(holdsOldVersion(system));
    EXPECT_EQ(contentOf(system, ScriptedSystem::kept), "part");
}

TEST(LastGoodVersion, IsLostByASecondCallWhileNoExecutableIsInPlace) {
    ScriptedSystem system;
    system.files.erase(ScriptedSystem::fresh);
    EXPECT_EQ(endOfUpdate(system), "1");
    EXPECT_TRUE(holdsOldVersion(system));
    EXPECT_EQ(endOfUpdate(system), "1");
    EXPECT_FALSE(holdsOldVersion(system));
}

// The second helper begins while the first one still watches the new version.
TEST(LastGoodVersion, IsLostByTwoHelpersAtOnceThatBothEndWithZero) {
    vek::log::Manager manager;
    manager.setDefaultLevel(vek::log::WARN);
    vek::log::Logger& logger = *manager.getLogger("TOLMAR_HELPER");
    ScriptedSystem system;
    const auto exitCode = [&] {
        try {
            return tolmar::ServiceReplacement(system, logger).run();
        } catch (const Exited& exited) {
            return exited.code;
        }
    };
    int second = -1;
    system.before = [&](const std::string& call) {
        if (call == "Sleep" && second == -1 && system.runningVersion == "new" &&
            system.openHandles.empty()) {
            second = -2;
            second = exitCode();
        }
    };
    std::strcpy(tolmar::helperDirectory.data(), "D");
    EXPECT_EQ(exitCode(), 0);
    EXPECT_EQ(second, 0);
    EXPECT_FALSE(holdsOldVersion(system));
    EXPECT_EQ(contentOf(system, ScriptedSystem::kept), "new");
    EXPECT_EQ(system.runningVersion, "new");
}

}  // namespace
