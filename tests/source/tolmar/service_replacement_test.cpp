#include "source/tolmar/service_replacement.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <numeric>

#include <gtest/gtest.h>

#include "source/tolmar/helper_directory.h"
#include "tests/source/tolmar/scripted_system.h"
#include "vek/log/manager.h"
#include "vek/pathinfo.h"

namespace {

using tolmar::test::Exited;
using tolmar::test::LogRecorder;
using tolmar::test::NeverEnds;
using tolmar::test::ScriptedSystem;
using tolmar::test::Trace;

constexpr char openManager[] = "OpenSCManagerA(null, null, 0xF003F)";
constexpr char openTolmar[] = "OpenServiceA(manager, tolmar, 0xF01FF)";
constexpr char sendStop[] = "ControlService(service, 1)";
constexpr char sendStart[] = "StartServiceA(service, 0, null)";
constexpr char query[] = "QueryServiceStatus(service)";
constexpr char closeService[] = "CloseServiceHandle(service)";
constexpr char closeManager[] = "CloseServiceHandle(manager)";
constexpr char closeNull[] = "CloseServiceHandle(null)";
constexpr char deleteKept[] = "DeleteFileA(D/tolmar.old)";
constexpr char moveAside[] = "MoveFileA(D/tolmar.exe, D/tolmar.old)";
constexpr char moveBack[] = "MoveFileA(D/tolmar.old, D/tolmar.exe)";
constexpr char lookUp[] = "PathInfo::get(QadDataDir, tolmar.exe)";
constexpr char copyNew[] = "CopyFileA(N\\tolmar.exe, D/tolmar.exe, 0)";

Trace operator+(Trace left, const Trace& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Trace repeated(int times, const Trace& part) {
    Trace result;
    for (int i = 0; i < times; ++i) {
        result.insert(result.end(), part.begin(), part.end());
    }
    return result;
}

// The parts of a run in which nothing goes wrong.
const Trace stopPart = {openManager, openTolmar,   sendStop,    "Sleep(1000)",
                        query,       closeService, closeManager};
const Trace backupPart = {deleteKept, moveAside, "Sleep(500)"};
const Trace copyPart = {lookUp, copyNew, "Sleep(500)"};
const Trace startPart = {openManager, openTolmar,   sendStart,   "Sleep(1000)",
                         query,       closeService, closeManager};
const Trace watchRound = {"Sleep(100)", openManager, openTolmar, query, closeService, closeManager};
const Trace swapPart = stopPart + backupPart + copyPart;

class ServiceReplacement : public testing::Test {
  protected:
    ServiceReplacement() {
        std::strcpy(tolmar::helperDirectory.data(), "D");
        manager.setDefaultLevel(vek::log::WARN);
    }

    // Runs the whole procedure. Its exit code, however it ended.
    int run() {
        LogRecorder recorder(logger, system.trace);
        try {
            const int code = procedure.run();
            returned = true;
            return code;
        } catch (const Exited& exited) {
            return exited.code;
        }
    }

    // Lets the call `name` fail from its `first` to its `last` time, counted from 0.
    void fail(const std::string& name, int first = 0, int last = 0) {
        system.fails = [=](const std::string& call, int, int nth) {
            return call == name && nth >= first && nth <= last;
        };
    }

    // A new version that starts and then falls over.
    void letNewVersionFall() {
        system.statesAfterStartOfNew = {SERVICE_STOP_PENDING, SERVICE_STOPPED};
    }

    long count(const std::string& call) const {
        return std::count(system.trace.begin(), system.trace.end(), call);
    }

    // The milliseconds that the run has slept.
    long slept() const {
        long sum = 0;
        for (const std::string& call : system.trace) {
            if (call.starts_with("Sleep(")) {
                sum += std::stol(call.substr(6));
            }
        }
        return sum;
    }

    // No line is logged unless a test asks for it, which keeps the traces short.
    vek::log::Manager manager;
    vek::log::Logger& logger = *manager.getLogger("TOLMAR_HELPER");
    ScriptedSystem system;
    tolmar::ServiceReplacement procedure{system, logger};
    bool returned = false;
};

TEST_F(ServiceReplacement, GoodUpdateMakesTheseCallsInThisOrder) {
    EXPECT_EQ(run(), 0);
    EXPECT_FALSE(returned);
    EXPECT_EQ(system.trace,
              swapPart + startPart + Trace({"Sleep(3000)"}) + watchRound + Trace({"exit(0)"}));
    EXPECT_EQ(system.files[ScriptedSystem::installed], "new");
    EXPECT_EQ(system.files[ScriptedSystem::kept], "old");
    EXPECT_EQ(system.files[ScriptedSystem::fresh], "new");
    EXPECT_EQ(system.runningVersion, "new");
    EXPECT_EQ(slept(), 6100);
}

TEST_F(ServiceReplacement, GoodUpdateLogsTheseLinesAtTheirPlaces) {
    logger.setLevel(vek::log::DEBUG, false);
    run();
    EXPECT_EQ(system.trace, Trace({"log: stopping tolmar"}) + stopPart +
                                Trace({"log: copy backup files"}) + backupPart +
                                Trace({"log: copy tolmar.exe"}) + copyPart +
                                Trace({"log: start tolmar"}) + startPart + Trace({"Sleep(3000)"}) +
                                watchRound + Trace({"log: tolmar is running -> ok", "exit(0)"}));
}

// Stopping.

TEST_F(ServiceReplacement, ManagerThatCantBeOpenedEndsItWithNothingDone) {
    fail("OpenSCManagerA");
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(returned);
    EXPECT_EQ(system.trace, (Trace({openManager, closeNull})));
}

TEST_F(ServiceReplacement, AbsentServiceEndsItWithNothingDone) {
    system.serviceExists = false;
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(returned);
    EXPECT_EQ(system.trace, (Trace({openManager, openTolmar, closeNull, closeManager})));
}

TEST_F(ServiceReplacement, RefusedStopEndsItWithNothingDone) {
    fail("ControlService");
    system.lastError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(returned);
    EXPECT_EQ(
        system.trace,
        (Trace({openManager, openTolmar, sendStop, "GetLastError()", closeService, closeManager})));
    EXPECT_EQ(system.files[ScriptedSystem::installed], "old");
    EXPECT_EQ(system.files[ScriptedSystem::kept], "previous");
}

TEST_F(ServiceReplacement, ServiceThatIsNotActiveCountsAsStoppedWithoutAWait) {
    system.states = {SERVICE_STOPPED};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace, Trace({openManager, openTolmar, sendStop, "GetLastError()",
                                   closeService, closeManager}) +
                                backupPart + copyPart + startPart + Trace({"Sleep(3000)"}) +
                                watchRound + Trace({"exit(0)"}));
}

TEST_F(ServiceReplacement, FailedQueryAfterTheStopIsTakenAsStopped) {
    fail("QueryServiceStatus");
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace,
              swapPart + startPart + Trace({"Sleep(3000)"}) + watchRound + Trace({"exit(0)"}));
}

TEST_F(ServiceReplacement, FailedQueryWhileStoppingIsTakenAsStopped) {
    system.statesAfterStop = {SERVICE_STOP_PENDING};
    fail("QueryServiceStatus", 3, 3);
    run();
    EXPECT_EQ(Trace(system.trace.begin() + 3, system.trace.begin() + 13),
              repeated(4, Trace({"Sleep(1000)", query})) + Trace({closeService, closeManager}));
    EXPECT_EQ(count(copyNew), 1);
}

TEST_F(ServiceReplacement, WaitsSecondBySecondWhileTheServiceStops) {
    system.statesAfterStop = {SERVICE_STOP_PENDING, SERVICE_STOP_PENDING, SERVICE_STOPPED};
    run();
    EXPECT_EQ(Trace(system.trace.begin(), system.trace.begin() + 11),
              Trace({openManager, openTolmar, sendStop}) +
                  repeated(3, Trace({"Sleep(1000)", query})) + Trace({closeService, closeManager}));
}

TEST_F(ServiceReplacement, AnyStateButStopPendingCountsAsStopped) {
    for (const DWORD state : std::initializer_list<DWORD>{SERVICE_STOPPED, SERVICE_START_PENDING,
                                                          SERVICE_RUNNING, SERVICE_CONTINUE_PENDING,
                                                          SERVICE_PAUSE_PENDING, SERVICE_PAUSED}) {
        ScriptedSystem other;
        other.statesAfterStop = {state};
        EXPECT_EQ(tolmar::ServiceReplacement(other, logger).controlService("tolmar", 2), 1);
        EXPECT_EQ(other.trace, stopPart) << state;
    }
}

TEST_F(ServiceReplacement, WaitForTheStopHasNoBound) {
    system.statesAfterStop = {SERVICE_STOP_PENDING};
    system.pollLimit = 12000;
    EXPECT_THROW(run(), NeverEnds);
    EXPECT_EQ(count(query), 12000);
    EXPECT_EQ(count("Sleep(1000)"), 12000);
    EXPECT_EQ(count(deleteKept), 0);
}

TEST_F(ServiceReplacement, OtherCommandsOpenAndCloseTheManagerAndFail) {
    for (const int command : {0, 1, 4, -1}) {
        system.trace.clear();
        EXPECT_EQ(procedure.controlService("tolmar", command), 0);
        EXPECT_EQ(system.trace, (Trace({openManager, closeManager})));
    }
}

TEST_F(ServiceReplacement, ControlServiceUsesTheNameItIsGiven) {
    procedure.controlService("other", 2);
    EXPECT_EQ(system.trace[1], "OpenServiceA(manager, other, 0xF01FF)");
}

// Moving the installed executable aside.

TEST_F(ServiceReplacement, BackupSucceedsAtOnceAndStillPauses) {
    EXPECT_EQ(procedure.backupExecutable(), 1);
    EXPECT_EQ(system.trace, backupPart);
}

TEST_F(ServiceReplacement, BackupGoesOnAfterThirtyFailures) {
    fail("MoveFileA", 0, 28);
    EXPECT_EQ(procedure.backupExecutable(), 1);
    EXPECT_EQ(count(moveAside), 30);
    EXPECT_EQ(slept(), 15000);
}

TEST_F(ServiceReplacement, BackupThatSucceedsAtThe31stTryStillEndsTheProcess) {
    fail("MoveFileA", 0, 29);
    EXPECT_EQ(run(), 1);
    EXPECT_FALSE(returned);
    EXPECT_EQ(system.trace, stopPart + Trace({deleteKept}) +
                                repeated(30, Trace({moveAside, "Sleep(500)"})) +
                                Trace({moveAside, "exit(1)"}));
    EXPECT_EQ(system.files.count(ScriptedSystem::installed), 0u);
    EXPECT_EQ(system.files[ScriptedSystem::kept], "old");
}

TEST_F(ServiceReplacement, BackupThatNeverSucceedsEndsTheProcess) {
    fail("MoveFileA", 0, 1000);
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(count(moveAside), 31);
    EXPECT_EQ(system.trace.back(), "exit(1)");
    EXPECT_EQ(system.files[ScriptedSystem::installed], "old");
    EXPECT_EQ(system.files.count(ScriptedSystem::kept), 0u);
}

TEST_F(ServiceReplacement, KeptFileThatCantBeDeletedGoesUnnoticedUntilThe31stTry) {
    fail("DeleteFileA");
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(system.trace, stopPart + Trace({deleteKept}) +
                                repeated(30, Trace({moveAside, "Sleep(500)"})) +
                                Trace({moveAside, "exit(1)"}));
    EXPECT_EQ(system.files[ScriptedSystem::kept], "previous");
}

TEST_F(ServiceReplacement, MissingKeptFileIsNoFailure) {
    system.files.erase(ScriptedSystem::kept);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.files[ScriptedSystem::kept], "old");
}

// Copying the new executable.

TEST_F(ServiceReplacement, CopySucceedsAtOnceAndStillPauses) {
    EXPECT_EQ(procedure.copyNewExecutable(), 1);
    EXPECT_EQ(system.trace, copyPart);
}

TEST_F(ServiceReplacement, CopyGoesOnAfterThirtyFailures) {
    fail("CopyFileA", 0, 28);
    EXPECT_EQ(procedure.copyNewExecutable(), 1);
    EXPECT_EQ(count(copyNew), 30);
    EXPECT_EQ(slept(), 15000);
}

TEST_F(ServiceReplacement, CopyThatSucceedsAtThe31stTryStillEndsTheProcess) {
    fail("CopyFileA", 0, 29);
    EXPECT_EQ(run(), 1);
    EXPECT_FALSE(returned);
    EXPECT_EQ(system.trace, stopPart + backupPart + Trace({lookUp}) +
                                repeated(30, Trace({copyNew, "Sleep(500)"})) +
                                Trace({copyNew, "exit(1)"}));
    EXPECT_EQ(system.files[ScriptedSystem::installed], "new");
}

TEST_F(ServiceReplacement, CopyThatNeverSucceedsLeavesTheKeptFileAndNoRestore) {
    system.files.erase(ScriptedSystem::fresh);
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(count(copyNew), 31);
    EXPECT_EQ(count(moveBack), 0);
    EXPECT_EQ(count(sendStart), 0);
    EXPECT_EQ(system.files[ScriptedSystem::kept], "old");
}

TEST_F(ServiceReplacement, UnknownDirectoryOfTheNewExecutableLeavesTheProcedureAsAnException) {
    fail("PathInfo::get");
    EXPECT_THROW(run(), vek::PathInfo::Error);
    EXPECT_EQ(system.trace, stopPart + backupPart + Trace({lookUp}));
    EXPECT_EQ(system.files.count(ScriptedSystem::installed), 0u);
    EXPECT_EQ(system.files[ScriptedSystem::kept], "old");
}

// Starting.

TEST_F(ServiceReplacement, StartServiceStartsTolmar) {
    system.states = {SERVICE_STOPPED};
    EXPECT_EQ(procedure.startService(), 1);
    EXPECT_EQ(system.trace, startPart);
}

TEST_F(ServiceReplacement, ResultOfTheStartIsIgnored) {
    const Trace watched = Trace({"Sleep(3000)"}) + watchRound + Trace({"exit(0)"});
    fail("OpenSCManagerA", 1, 1);
    system.states = {SERVICE_RUNNING};
    system.statesAfterStop = {SERVICE_STOPPED, SERVICE_RUNNING};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace, swapPart + Trace({openManager, closeNull}) + watched);
}

TEST_F(ServiceReplacement, ServiceThatCantBeOpenedForTheStartIsWatchedAllTheSame) {
    fail("OpenServiceA", 1, 1);
    system.statesAfterStop = {SERVICE_STOPPED, SERVICE_RUNNING};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace, swapPart + Trace({openManager, openTolmar, closeNull, closeManager}) +
                                Trace({"Sleep(3000)"}) + watchRound + Trace({"exit(0)"}));
}

TEST_F(ServiceReplacement, FailedStartCallIsPolledLikeAGoodOne) {
    fail("StartServiceA");
    system.statesAfterStop = {SERVICE_STOPPED, SERVICE_STOPPED, SERVICE_RUNNING};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(count(sendStart), 1);
    EXPECT_EQ(count("Sleep(1000)"), 3);
}

TEST_F(ServiceReplacement, FailedQueryEndsTheStartWithFailure) {
    fail("QueryServiceStatus", 0, 0);
    EXPECT_EQ(procedure.controlService("tolmar", 3), 0);
    EXPECT_EQ(system.trace, startPart);
}

TEST_F(ServiceReplacement, FailedQueryWhileStartingEndsTheStartWithFailure) {
    system.states = {SERVICE_STOPPED};
    system.statesAfterStartOfOld = {SERVICE_START_PENDING};
    fail("QueryServiceStatus", 2, 2);
    EXPECT_EQ(procedure.controlService("tolmar", 3), 0);
    EXPECT_EQ(system.trace, Trace({openManager, openTolmar, sendStart}) +
                                repeated(3, Trace({"Sleep(1000)", query})) +
                                Trace({closeService, closeManager}));
}

TEST_F(ServiceReplacement, WaitsWhileTheServiceIsPendingOrStopped) {
    system.states = {SERVICE_STOPPED};
    system.statesAfterStartOfOld = {SERVICE_STOPPED, SERVICE_START_PENDING, SERVICE_STOPPED,
                                    SERVICE_RUNNING};
    EXPECT_EQ(procedure.controlService("tolmar", 3), 1);
    EXPECT_EQ(count("Sleep(1000)"), 4);
    EXPECT_EQ(slept(), 4000);
}

TEST_F(ServiceReplacement, AnyOtherStateEndsTheWaitForTheStart) {
    for (const DWORD state : std::initializer_list<DWORD>{SERVICE_STOP_PENDING, SERVICE_RUNNING,
                                                          SERVICE_CONTINUE_PENDING,
                                                          SERVICE_PAUSE_PENDING, SERVICE_PAUSED}) {
        ScriptedSystem other;
        other.states = {SERVICE_STOPPED};
        other.statesAfterStartOfOld = {state};
        EXPECT_EQ(tolmar::ServiceReplacement(other, logger).controlService("tolmar", 3), 1);
        EXPECT_EQ(other.trace, startPart) << state;
    }
}

TEST_F(ServiceReplacement, WaitForTheStartHasNoBound) {
    for (const DWORD state : std::initializer_list<DWORD>{SERVICE_STOPPED, SERVICE_START_PENDING}) {
        ScriptedSystem other;
        other.statesAfterStartOfNew = {state};
        other.pollLimit = 12000;
        EXPECT_THROW(tolmar::ServiceReplacement(other, logger).run(), NeverEnds);
        EXPECT_GE(std::count(other.trace.begin(), other.trace.end(), query), 12000) << state;
        EXPECT_EQ(std::count(other.trace.begin(), other.trace.end(), "Sleep(3000)"), 0) << state;
    }
}

// Watching.

TEST_F(ServiceReplacement, ServiceThatRunsInRound50IsGood) {
    letNewVersionFall();
    system.statesAfterStartOfNew = std::deque<DWORD>(50, SERVICE_STOP_PENDING);
    system.statesAfterStartOfNew.push_back(SERVICE_RUNNING);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace, swapPart + startPart + Trace({"Sleep(3000)"}) +
                                repeated(50, watchRound) + Trace({"exit(0)"}));
}

TEST_F(ServiceReplacement, ServiceThatWouldRunInRound51IsTooLate) {
    system.statesAfterStartOfNew = std::deque<DWORD>(51, SERVICE_STOP_PENDING);
    system.statesAfterStartOfNew.push_back(SERVICE_RUNNING);
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(system.trace,
              swapPart + startPart + Trace({"Sleep(3000)"}) + repeated(50, watchRound) +
                  repeated(30, Trace({moveBack, "Sleep(500)"})) + Trace({moveBack, "exit(1)"}));
}

TEST_F(ServiceReplacement, RoundWithoutAManagerCountsAsNotRunning) {
    fail("OpenSCManagerA", 2, 2);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace, swapPart + startPart +
                                Trace({"Sleep(3000)", "Sleep(100)", openManager}) + watchRound +
                                Trace({"exit(0)"}));
}

TEST_F(ServiceReplacement, RoundWithoutAServiceCountsAsNotRunning) {
    fail("OpenServiceA", 2, 2);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace,
              swapPart + startPart +
                  Trace({"Sleep(3000)", "Sleep(100)", openManager, openTolmar, closeManager}) +
                  watchRound + Trace({"exit(0)"}));
}

TEST_F(ServiceReplacement, RoundWithAFailedQueryCountsAsNotRunning) {
    fail("QueryServiceStatus", 2, 2);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(system.trace, swapPart + startPart + Trace({"Sleep(3000)"}) +
                                repeated(2, watchRound) + Trace({"exit(0)"}));
}

TEST_F(ServiceReplacement, ResultOfTheQueryOfARoundIsNotLookedAt) {
    fail("QueryServiceStatus", 0, 2);
    EXPECT_EQ(procedure.isServiceRunning(), 0);
    system.failedQueryState = SERVICE_RUNNING;
    EXPECT_EQ(procedure.isServiceRunning(), 1);
    system.failedQueryState = 0;
    // The status of one round is not that of the round before.
    EXPECT_EQ(procedure.isServiceRunning(), 0);
}

TEST_F(ServiceReplacement, OnlyRunningIsRunning) {
    for (DWORD state = SERVICE_STOPPED; state <= SERVICE_PAUSED; ++state) {
        system.states = {state};
        EXPECT_EQ(procedure.isServiceRunning(), state == SERVICE_RUNNING ? 1 : 0) << state;
    }
}

// Going back.

TEST_F(ServiceReplacement, RestoreCantReplaceTheNewExecutableAndEndsTheProcess) {
    letNewVersionFall();
    EXPECT_EQ(run(), 1);
    EXPECT_FALSE(returned);
    EXPECT_EQ(count(moveBack), 31);
    EXPECT_EQ(count(sendStart), 1);
    EXPECT_EQ(count("PathInfo::destroy()"), 0);
    EXPECT_EQ(system.trace.back(), "exit(1)");
    EXPECT_EQ(system.files[ScriptedSystem::installed], "new");
    EXPECT_EQ(system.files[ScriptedSystem::kept], "old");
    EXPECT_EQ(slept(), 1000 + 500 + 500 + 1000 + 3000 + 50 * 100 + 30 * 500);
}

TEST_F(ServiceReplacement, RestoreWorksIfTheNewExecutableHasGone) {
    logger.setLevel(vek::log::DEBUG, false);
    letNewVersionFall();
    int moves = 0;
    system.before = [&](const std::string& call) {
        if (call == "MoveFileA" && ++moves == 2) {
            system.files.erase(ScriptedSystem::installed);
        }
    };
    EXPECT_EQ(run(), 1);
    EXPECT_TRUE(returned);
    const auto restore = std::find(system.trace.begin(), system.trace.end(), "log: restore tolmar");
    EXPECT_EQ(
        Trace(restore, system.trace.end()),
        Trace({"log: restore tolmar", moveBack, "Sleep(500)", "log: start tolmar"}) + startPart +
            Trace({"PathInfo::instance()", "PathInfo::destroy()", "log: tolmarhlp with exit 1"}));
    EXPECT_EQ(system.files[ScriptedSystem::installed], "old");
    EXPECT_EQ(system.files.count(ScriptedSystem::kept), 0u);
    EXPECT_EQ(system.runningVersion, "old");
}

TEST_F(ServiceReplacement, RestoreSucceedsAtOnceAndStillPauses) {
    system.files.erase(ScriptedSystem::installed);
    EXPECT_EQ(procedure.restoreExecutable(), 1);
    EXPECT_EQ(system.trace, (Trace({moveBack, "Sleep(500)"})));
}

TEST_F(ServiceReplacement, RestoreThatSucceedsAtThe31stTryStillEndsTheProcess) {
    system.files.erase(ScriptedSystem::installed);
    fail("MoveFileA", 0, 29);
    EXPECT_THROW(procedure.restoreExecutable(), Exited);
    EXPECT_EQ(system.trace,
              repeated(30, Trace({moveBack, "Sleep(500)"})) + Trace({moveBack, "exit(1)"}));
    EXPECT_EQ(system.files[ScriptedSystem::installed], "previous");
}

TEST_F(ServiceReplacement, ResultOfTheSecondStartIsIgnored) {
    letNewVersionFall();
    int moves = 0;
    system.before = [&](const std::string& call) {
        if (call == "MoveFileA" && ++moves == 2) {
            system.files.erase(ScriptedSystem::installed);
            system.serviceExists = false;
        }
    };
    EXPECT_EQ(run(), 1);
    EXPECT_TRUE(returned);
    EXPECT_EQ(count("PathInfo::destroy()"), 1);
}

// The log never alters the flow.

TEST_F(ServiceReplacement, MakesTheSameCallsAtEveryLevelOfItsLogger) {
    for (int scenario = 0; scenario < 6; ++scenario) {
        Trace silent;
        int silentCode = 0;
        for (int level = vek::log::OFF; level <= vek::log::INVALID; ++level) {
            ScriptedSystem other;
            vek::log::Manager otherManager;
            vek::log::Logger& otherLogger = *otherManager.getLogger("TOLMAR_HELPER");
            otherLogger.setLevel(static_cast<vek::log::Level>(level), false);
            other.serviceExists = scenario != 1;
            if (scenario == 2) {
                other.files.erase(ScriptedSystem::fresh);
            }
            if (scenario >= 3) {
                other.statesAfterStartOfNew = {SERVICE_PAUSED};
            }
            if (scenario >= 4) {
                other.before = [&](const std::string& call) {
                    if (call == "Sleep" && other.files[ScriptedSystem::installed] == "new") {
                        other.files.erase(ScriptedSystem::installed);
                    }
                };
            }
            int code = -1;
            {
                LogRecorder recorder(otherLogger, other.trace);
                try {
                    code = tolmar::ServiceReplacement(other, otherLogger).run();
                } catch (const Exited& exited) {
                    code = exited.code;
                } catch (const NeverEnds&) {
                    code = -2;
                }
            }
            const auto lines =
                std::count_if(other.trace.begin(), other.trace.end(),
                              [](const std::string& call) { return call.starts_with("log: "); });
            EXPECT_EQ(lines != 0, level >= vek::log::DEBUG) << scenario << " " << level;
            std::erase_if(other.trace,
                          [](const std::string& call) { return call.starts_with("log: "); });
            if (level == vek::log::OFF) {
                silent = other.trace;
                silentCode = code;
            } else if (code != -2) {
                EXPECT_EQ(other.trace, silent) << scenario << " " << level;
                EXPECT_EQ(code, silentCode) << scenario << " " << level;
            }
        }
    }
}

}  // namespace
