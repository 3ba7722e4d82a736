// Kills the helper ahead of each of its calls, and in the midst of a copy, and compares what it
// leaves with the table of docs/helper.md and with that of README.md. Then does what the table
// says: that has to bring the service up again.
#include <algorithm>
#include <cstddef>

#include <gtest/gtest.h>

#include "source/tolmar/run_helper.h"
#include "tests/source/tolmar/document_table.h"
#include "tests/source/tolmar/scripted_system.h"
#include "vek/base/text.h"

namespace {

using tolmar::test::Exited;
using tolmar::test::NeverEnds;
using tolmar::test::Row;
using tolmar::test::rowsOf;
using tolmar::test::ScriptedSystem;

// No std::exception, so that the helper catches it as little as its end.
struct Killed {};

struct NoPal {
    NoPal(bool, int, int, std::nullptr_t) {}
};
struct NoLog {
    explicit NoLog(std::nullptr_t) {}
    void configure(const std::string&) {}
};

std::string contentOf(const ScriptedSystem& system, const char* path) {
    const auto file = system.files.find(path);
    return file == system.files.end() ? "none" : file->second;
}

// What a file's cell means on the model.
bool isFile(const std::string& cell, const std::string& content, const char* before) {
    return content == (cell == "as before"                   ? before
                       : cell == "the old version"           ? "old"
                       : cell == "the new version"           ? "new"
                       : cell == "a part of the new version" ? "part"
                                                             : cell);
}

// True if the state of the service is one of those that the cell names: "not running or starting".
bool isService(std::string cell, DWORD state) {
    const std::size_t last = cell.find(" or ");
    if (last != std::string::npos) {
        cell.replace(last, 4, ",");
    }
    std::vector<std::string> states;
    vek::split(cell, ',', states, true, false);
    const char* const name = state == SERVICE_RUNNING         ? "running"
                             : state == SERVICE_START_PENDING ? "starting"
                             : state == SERVICE_STOP_PENDING  ? "stopping"
                                                              : "not running";
    return std::find(states.begin(), states.end(), name) != states.end();
}

struct Machine {
    const char* name;
    std::function<void(ScriptedSystem&)> prepare;

    friend void PrintTo(const Machine& machine, std::ostream* out) { *out << machine.name; }
};

// The new version falls. Without `stays` somebody removes it, and the helper can go back.
void letNewVersionFall(ScriptedSystem& system, bool stays) {
    system.statesAfterStartOfNew = {SERVICE_STOP_PENDING, SERVICE_STOPPED};
    system.statesAfterStartOfOld = {SERVICE_START_PENDING, SERVICE_RUNNING};
    if (!stays) {
        system.before = [&system](const std::string& call) {
            if (call == "MoveFileA" && contentOf(system, ScriptedSystem::kept) == "old") {
                system.files.erase(ScriptedSystem::installed);
            }
        };
    }
}

const Machine machines[] = {
    {"GoodUpdate", [](ScriptedSystem&) {}},
    {"SlowService",
     [](ScriptedSystem& system) {
         system.statesAfterStop = {SERVICE_STOP_PENDING, SERVICE_STOP_PENDING, SERVICE_STOPPED};
         system.statesAfterStartOfNew = {SERVICE_START_PENDING, SERVICE_START_PENDING,
                                         SERVICE_RUNNING};
     }},
    {"FallsOver", [](ScriptedSystem& system) { letNewVersionFall(system, true); }},
    {"FallsOverAndGoes", [](ScriptedSystem& system) { letNewVersionFall(system, false); }},
};

// The row of docs/helper.md for a kill ahead of `call`; nothing as long as nothing was done. What a
// move or a copy did is seen by the files.
std::string whenKilled(ScriptedSystem& system, const std::string& call) {
    const std::string installed = contentOf(system, ScriptedSystem::installed);
    const std::string kept = contentOf(system, ScriptedSystem::kept);
    const bool backAgain = system.countOf["MoveFileA"] >= 2;
    return system.countOf["ControlService"] == 0 ? ""
           : system.countOf["DeleteFileA"] == 0  ? "in step 1"
           : system.countOf["MoveFileA"] == 0    ? "between the delete and the move of step 2"
           : installed == "part"                 ? "during the copy"
           : system.countOf["CopyFileA"] == 0    ? "between the move and the copy"
           : kept == "none"                      ? "in step 6 after the move"
           : backAgain || call == "MoveFileA"    ? "in step 6 before the move"
                                                 : "before or in step 4 or 5";
}

struct Kill {
    std::string when;
    std::string call;
    bool happened = false;
};

// Runs the helper until it is killed ahead of its call number `index`, or in the midst of it.
Kill runAndKill(ScriptedSystem& system, int index, bool inTheMidst) {
    Kill kill;
    int count = 0;
    const auto machineDoes = system.before;
    system.before = [&](const std::string& call) {
        // While the stack is unwound nothing counts any more.
        if (kill.happened) {
            return;
        }
        if (count++ == index && (!inTheMidst || call == "CopyFileA")) {
            if (inTheMidst) {
                system.files[ScriptedSystem::installed] = "part";
            }
            kill = {whenKilled(system, call), call, true};
            throw Killed{};
        }
        if (machineDoes) {
            machineDoes(call);
        }
    };
    try {
        tolmar::runHelper<NoPal, NoLog>(system, "D");
    } catch (const Killed&) {
    } catch (const Exited&) {
    } catch (const NeverEnds&) {
    }
    system.before = nullptr;
    return kill;
}

bool isInTheReadme(const ScriptedSystem& system) {
    static const std::vector<Row> rows = rowsOf(README_PATH, "| Exit code | `tolmar.exe`");
    for (const Row& row : rows) {
        if (isFile(row.at(1), contentOf(system, ScriptedSystem::installed), "old") &&
            isFile(row.at(2), contentOf(system, ScriptedSystem::kept), "previous")) {
            return true;
        }
    }
    return false;
}

// The first words of what the table says, done on the model. The service has come to rest.
void doWhatTheTableSays(ScriptedSystem& system, const std::string& remedy) {
    const bool start = remedy.starts_with("start the service") ||
                       remedy.starts_with("wait until it has stopped, start it") ||
                       remedy.starts_with("see whether the service runs; start it");
    const bool putBack = remedy.starts_with("[put the old version back]") ||
                         remedy.starts_with("put the old version back") || remedy == "the same";
    ASSERT_TRUE(start || putBack) << remedy;
    if (putBack) {
        ASSERT_EQ(contentOf(system, ScriptedSystem::kept), "old");
        system.states = {SERVICE_STOPPED};
        system.files[ScriptedSystem::installed] = "old";
        system.files.erase(ScriptedSystem::kept);
    }
    if (system.states.back() == SERVICE_RUNNING) {
        return;
    }
    system.states = {SERVICE_STOPPED};
    system.statesAfterStartOfNew = system.statesAfterStartOfOld = {SERVICE_RUNNING};
    EXPECT_NE(system.startService(nullptr, 0, nullptr), FALSE);
}

class KilledHelper : public testing::TestWithParam<Machine> {
  protected:
    // Returns whether there was a call number `index`.
    bool expectARow(int index, bool inTheMidst) {
        ScriptedSystem system;
        system.keepTrace = false;
        GetParam().prepare(system);
        const Kill kill = runAndKill(system, index, inTheMidst);
        if (!kill.happened) {
            return false;
        }
        SCOPED_TRACE("killed at call " + std::to_string(index) + ", " + kill.call);
        if (kill.when.empty()) {
            EXPECT_EQ(contentOf(system, ScriptedSystem::installed), "old");
            EXPECT_EQ(contentOf(system, ScriptedSystem::kept), "previous");
            EXPECT_EQ(system.runningVersion, "old");
            return true;
        }
        reached.insert(kill.when);
        expectTheRow(system, kill.when);
        return true;
    }

    std::set<std::string> reached;

  private:
    static void expectTheRow(ScriptedSystem& system, const std::string& when) {
        static const std::vector<Row> rows = rowsOf(HELPER_DOCUMENT, "| Killed |");
        for (const Row& row : rows) {
            if (row.at(0) != when) {
                continue;
            }
            EXPECT_TRUE(isFile(row.at(1), contentOf(system, ScriptedSystem::installed), "old"))
                << when;
            EXPECT_TRUE(isFile(row.at(2), contentOf(system, ScriptedSystem::kept), "previous"))
                << when;
            EXPECT_TRUE(isService(row.at(3), system.states.front()))
                << when << ", state " << system.states.front();
            EXPECT_TRUE(isInTheReadme(system)) << when;
            doWhatTheTableSays(system, row.at(4));
            EXPECT_EQ(system.runningVersion, contentOf(system, ScriptedSystem::installed)) << when;
            return;
        }
        ADD_FAILURE() << "docs/helper.md has no row \"" << when << "\"";
    }
};

TEST_P(KilledHelper, LeavesARowOfTheTableWhoseAdviceBringsTheServiceUpWhicheverCallIsNext) {
    int index = 0;
    while (expectARow(index, false)) {
        // The 50 checks whether the service runs are alike, with 6 calls each.
        index += index > 40 && index < 260 ? 7 : 1;
    }
    // A whole procedure, not one that ended at its first call.
    EXPECT_GT(index, 25);
    EXPECT_GE(reached.size(), 4u);
}

TEST_P(KilledHelper, LeavesAPartOfTheNewVersionInTheMidstOfTheCopy) {
    for (int index = 0; index < 40; ++index) {
        expectARow(index, true);
    }
    EXPECT_EQ(reached, std::set<std::string>{"during the copy"});
}

INSTANTIATE_TEST_SUITE_P(Machines, KilledHelper, testing::ValuesIn(machines),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
