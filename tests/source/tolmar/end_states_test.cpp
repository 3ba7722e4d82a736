// Lets the calls of the helper fail, one by one, in pairs, and for good, and holds every state that
// a run can end in against the tables of README.md: no run may end in a state that isn't there, and
// no row may be unreachable.
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "source/tolmar/run_helper.h"
#include "tests/source/tolmar/scripted_system.h"
#include "vek/base/text.h"
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
    std::ifstream readme(README_PATH);
    EXPECT_TRUE(readme.good()) << README_PATH;
    EndStates states;
    bool inTable = false;
    for (std::string line; std::getline(readme, line);) {
        vek::trim(line);
        if (!line.starts_with("|")) {
            inTable = false;
        } else if (line.starts_with(header)) {
            inTable = true;
        } else if (inTable && !line.starts_with("|---")) {
            std::vector<std::string> cells;
            vek::split(line, '|', cells, true, false);
            EXPECT_GE(cells.size(), columns) << line;
            EndState state;
            for (std::size_t i = 0; i < columns && i < cells.size(); ++i) {
                state += (i == 0 ? "" : " | ") + cells[i];
            }
            EXPECT_TRUE(states.insert(state).second) << "twice in README.md: " << state;
        }
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

template <class Configurator>
int runWith(ScriptedSystem& system, const char* tail) {
    return tolmar::runHelper<vek::VekPal, Configurator>(system, tail);
}

// How a run left the process: the code and the message, as the tables say it. A run in which
// nothing fails has its real locals.
std::string runToItsEnd(ScriptedSystem& system, const char* tail) {
    // The helper's std::cerr, caught in memory: there are tens of thousands of runs.
    std::stringbuf message;
    std::streambuf* const ownBuffer = std::cerr.rdbuf(&message);
    std::string end;
    try {
        end = std::to_string(system.fails ? runWith<LogWithoutWorker>(system, tail)
                                          : runWith<vek::log::Configurator>(system, tail));
    } catch (const Exited& exited) {
        end = std::to_string(exited.code);
    } catch (const NeverEnds&) {
        end = "never ends";
    }
    std::cerr.rdbuf(ownBuffer);
    return message.str().empty() ? end : end + ", message";
}

// One kind of machine to update.
struct Machine {
    const char* name;
    std::function<void(ScriptedSystem&)> prepare;

    friend void PrintTo(const Machine& machine, std::ostream* out) { *out << machine.name; }
};

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
    const std::string end = runToItsEnd(system, "D");
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
     [](ScriptedSystem& system) { system.statesAfterStartOfNew = {SERVICE_STOP_PENDING}; }},
    {"NewExecutableMissing",
     [](ScriptedSystem& system) { system.files.erase(ScriptedSystem::fresh); }},
    {"CopyLeavesAPart", [](ScriptedSystem& system) { system.copyLeavesPart = true; }},
    {"CopyAlwaysLeavesAPart",
     [](ScriptedSystem& system) {
         system.copyLeavesPart = true;
         system.files.erase(ScriptedSystem::fresh);
     }},
    {"FallsOverAndGoes",
     [](ScriptedSystem& system) {
         system.statesAfterStartOfNew = {SERVICE_STOP_PENDING};
         system.before = [&system](const std::string& call) {
             if (call == "Sleep" && system.countOf["OpenSCManagerA"] > 5 &&
                 contentOf(system, ScriptedSystem::installed) == "new") {
                 system.files.erase(ScriptedSystem::installed);
             }
         };
     }},
    {"FallsOverAndGoesAndOldOneHangs",
     [](ScriptedSystem& system) {
         system.statesAfterStartOfNew = {SERVICE_STOP_PENDING};
         system.statesAfterStartOfOld = {SERVICE_START_PENDING};
         system.before = [&system](const std::string& call) {
             if (call == "Sleep" && system.countOf["OpenSCManagerA"] > 5 &&
                 contentOf(system, ScriptedSystem::installed) == "new") {
                 system.files.erase(ScriptedSystem::installed);
             }
         };
     }},
};

constexpr char replaceHeader[] = "| Exit code | `tolmar.exe`";
constexpr std::size_t replaceColumns = 4;

const char* const replaceCalls[] = {"OpenSCManagerA", "OpenServiceA",      "QueryServiceStatus",
                                    "ControlService", "StartServiceA",     "CloseServiceHandle",
                                    "DeleteFileA",    "MoveFileA",         "CopyFileA",
                                    "PathInfo::get",  "PathInfo::instance"};

// One kind of call fails from some time on for good, or 30 times and then works again; and so does
// every call `also`. Hands each end to `take`.
template <class Take>
void failKindsOfCalls(const Machine& machine, const std::string& also, Take take) {
    for (const std::string call : replaceCalls) {
        for (int start = 0; start < 8; ++start) {
            for (const int times : {30, 1000000}) {
                take(replaceEnd(machine,
                                [=](const std::string& name, int, int nth) {
                                    return name == also ||
                                           (name == call && nth >= start && nth < start + times);
                                }),
                     call + ", " + std::to_string(times) + " times, and all of " + also);
            }
        }
    }
}

class EndStatesOfReplaceMode : public testing::TestWithParam<Machine> {};

TEST_P(EndStatesOfReplaceMode, StandInTheReadmeWhicheverCallsFail) {
    const Machine& machine = GetParam();
    EndStates known = documented(replaceHeader, replaceColumns);
    const auto take = [&](const EndState& state, const std::string& failed) {
        // Each missing state is told once.
        EXPECT_FALSE(known.insert(state).second) << state << ", failing " << failed;
    };
    int calls = 0;
    take(replaceEnd(machine, nullptr, &calls), "nothing");
    for (int first = 0; first < calls; ++first) {
        // Each call fails in turn, and then with each later one. A run that fails has calls of its
        // own, so the second of a pair is counted in the run in which the first has failed.
        int callsThen = 0;
        const std::string name = "call " + std::to_string(first);
        take(replaceEnd(
                 machine, [=](const std::string&, int index, int) { return index == first; },
                 &callsThen),
             name);
        for (int second = first + 1; second < callsThen; ++second) {
            take(replaceEnd(machine, [=](const std::string&, int index,
                                         int) { return index == first || index == second; }),
                 name + " and " + std::to_string(second));
        }
    }
    failKindsOfCalls(machine, "", take);
    failKindsOfCalls(machine, "PathInfo::instance", take);
}

INSTANTIATE_TEST_SUITE_P(Machines, EndStatesOfReplaceMode, testing::ValuesIn(machines),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(EndStatesInTheReadme, AreAllReachable) {
    EndStates unreached = documented(replaceHeader, replaceColumns);
    ASSERT_FALSE(unreached.empty());
    for (const Machine& machine : machines) {
        unreached.erase(replaceEnd(machine, nullptr));
        for (const char* also : {"", "PathInfo::instance"}) {
            failKindsOfCalls(machine, also, [&](const EndState& state, const std::string&) {
                unreached.erase(state);
            });
        }
    }
    EXPECT_EQ(unreached, EndStates{});
}

TEST(EndStatesOfGuiMode, AreTheRowsOfTheReadme) {
    const EndStates rows = documented("| Exit code | GUI", 2);
    ASSERT_FALSE(rows.empty());
    EndStates reached;
    const auto endOf = [](const Fails& fails, int waitResult, int* calls) {
        ScriptedSystem system;
        system.waitResult = static_cast<std::uint32_t>(waitResult);
        system.fails = fails;
        const std::string end = runToItsEnd(system, "-restartgui D");
        const bool started = system.countOf["WinExec"] == 1 &&
                             !(fails && fails("WinExec", system.failableCalls - 1, 0));
        *calls = system.failableCalls;
        return end + " | " + (started ? "started" : "not started");
    };
    for (const int waitResult : {0, 258}) {
        int calls = 0;
        reached.insert(endOf(nullptr, waitResult, &calls));
        for (int first = 0; first < calls; ++first) {
            int callsThen = 0;
            reached.insert(endOf([=](const std::string&, int index, int) { return index == first; },
                                 waitResult, &callsThen));
            for (int second = first + 1; second < callsThen; ++second) {
                int ignored = 0;
                reached.insert(endOf([=](const std::string&, int index,
                                         int) { return index == first || index == second; },
                                     waitResult, &ignored));
            }
        }
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
            if (runToItsEnd(system, "D") != "never ends") {
                EXPECT_TRUE(system.openHandles.empty()) << machine.name << ", failing " << failed;
            }
        }
    }
}

}  // namespace
