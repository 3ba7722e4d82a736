// The levels written back into logging.conf, and all that can be in the way of that.
#include "tests/support/files.h"
#include "tests/vek/log/config/config_fixture.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using namespace vek::test;

class ConfigFileWriting : public ConfigTest {
  protected:
    // The content of the file, with line feeds only.
    std::string written(const std::string& name = "logging.conf") const {
        std::string text = readFile(name);
        std::erase(text, '\r');
        return text;
    }

    bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }

    // Runs with `text` and persists.
    ProgramOutput persist(const std::string& text, const Words& furtherSteps = {}) const {
        Words steps = {"configure=p", "set=a:INFO", "level=a"};
        steps.insert(steps.end(), furtherSteps.begin(), furtherSteps.end());
        steps.push_back("persist");
        return runWith(text, steps);
    }

    static constexpr char good[] = "a INFO own\n";

    // What `persist` puts into a file without anything else.
    static constexpr char levels[] =
        "processes : \n{\n  p : \n  {\n    loggers : \n    {\n      a = \"INFO\";\n    };\n"
        "    default_level = \"WARN\";\n  };\n};\n";
};

TEST_F(ConfigFileWriting, AddsTheGroupsThatAreMissing) {
    EXPECT_EQ(persist(""), (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(), levels);
}

TEST_F(ConfigFileWriting, LoggersThatFollowTheDefaultOrDoNotExistAreNotWritten) {
    EXPECT_EQ(goodOutput(runWith("defaults = { loggers = { absent = \"ERR\"; }; };",
                                 {"configure=p", "level=b", "level=a", "level=follows", "set=b:OFF",
                                  "set=a:TRACE", "set=later:ERR", "default=ERR", "persist"})),
              "b WARN\na WARN\nfollows WARN\n");
    EXPECT_EQ(written(),
              "defaults : \n{\n  loggers : \n  {\n    absent = \"ERR\";\n  };\n};\n"
              "processes : \n{\n  p : \n  {\n    loggers : \n    {\n      a = \"TRACE\";\n"
              "      b = \"OFF\";\n    };\n    default_level = \"ERR\";\n  };\n};\n");
}

TEST_F(ConfigFileWriting, ReplacesWhatWasThereAndKeepsTheOtherNames) {
    EXPECT_EQ(persist("processes = { p = { default_level = \"ERR\"; loggers = { gone = \"ERR\"; };"
                      " default_scope = \"TRACE\"; agents = { old = \"ERR\"; }; own = 5; }; };"),
              (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(),
              "processes : \n{\n  p : \n  {\n    default_scope = \"TRACE\";\n    agents : \n    {\n"
              "      old = \"ERR\";\n    };\n    own = 5;\n    loggers : \n    {\n"
              "      a = \"INFO\";\n    };\n    default_level = \"TRACE\";\n  };\n};\n");
}

TEST_F(ConfigFileWriting, AllElseSurvivesInValueAndType) {
    const std::string kept =
        "integer = 1;\nnegative = -7;\nlarge = 5000000000L;\nhex = 0x1F;\n"
        "hex64 = 0xFFFFFFFFFFL;\nfraction = 1.5;\nwhole = 2.0;\nyes = true;\nno = false;\n"
        "text = \"a \\\"quote\\\", a \\\\, a line\\nand a tab\\t.\";\nempty = \"\";\n"
        "array = [ 1, 2, 3 ];\ntexts = [ \"a\", \"b\" ];\nnone = [ ];\n"
        "list = ( 1, \"two\", 3.5, true, [ 4, 5 ], ( 6, ( ) ), 7L );\n"
        "group : \n{\n  inner : \n  {\n    deep = 1;\n  };\n  nothing : \n  {\n  };\n};\n"
        "defaults : \n{\n  wait_log_application = false;\n  sink : \n  {\n    file = ( \n      {\n"
        "        path = \"{exedir}\\\\x.log\";\n      }, \n      {\n"
        "        path = \"y.log\";\n        max_archives = 5;\n      } );\n  };\n};\n";
    EXPECT_EQ(persist(kept), (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(), kept + levels);
}

TEST_F(ConfigFileWriting, OtherProcessesSurvive) {
    const std::string other =
        "  q : \n  {\n    default_level = \"ERR\";\n    loggers : \n    {\n      a = \"ERR\";\n"
        "    };\n  };\n";
    EXPECT_EQ(persist("processes : \n{\n" + other + "};\n"), (ProgramOutput{0, good, ""}));
    std::string expected = levels;
    expected.insert(std::string("processes : \n{\n").size(), other);
    EXPECT_EQ(written(), expected);
}

TEST_F(ConfigFileWriting, CommentsAndLayoutRemainInTheCopyOnly) {
    const std::string text = "# why\ndefaults={default_level=\"ERR\"/* odd */;};";
    EXPECT_EQ(persist(text), (ProgramOutput{0, good, ""}));
    EXPECT_EQ(readFile("logging.conf.bak"), text);
    EXPECT_EQ(written().find("why"), std::string::npos);
}

TEST_F(ConfigFileWriting, IncludedSettingsAreWrittenIntoTheFile) {
    writeFile("other.conf", "x = 1;");
    EXPECT_EQ(persist("@include \"" + escaped(path("other.conf")) + "\"\n"),
              (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(), std::string("x = 1;\n") + levels);
    EXPECT_EQ(readFile("other.conf"), "x = 1;");
}

TEST_F(ConfigFileWriting, CopyFromBeforeIsReplaced) {
    writeFile("logging.conf.bak", std::string(1000, 'x'));
    EXPECT_EQ(persist("y = 1;"), (ProgramOutput{0, good, ""}));
    EXPECT_EQ(readFile("logging.conf.bak"), "y = 1;");
    EXPECT_EQ(persist(readFile("logging.conf")), (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written("logging.conf.bak"), std::string("y = 1;\n") + levels);
}

TEST_F(ConfigFileWriting, WrittenLevelsAreThoseOfTheNextStart) {
    EXPECT_EQ(goodOutput(runWith(
                  "", {"configure=p", "level=a", "set=a:INFO", "default=TRACE", "persist"})),
              "a WARN\n");
    EXPECT_EQ(goodOutput(run({"configure=p", "level=a", "level=b"})), "a INFO own\nb TRACE\n");
    EXPECT_EQ(goodOutput(run({"configure=q", "level=a", "level=b"})), "a WARN\nb WARN\n");
}

TEST_F(ConfigFileWriting, DefaultScopeOverridesTheWrittenLevelAtTheNextStart) {
    EXPECT_EQ(goodOutput(runWith("processes = { p = { default_scope = \"ERR\"; }; };",
                                 {"configure=p", "default=TRACE", "persist"})),
              "");
    EXPECT_EQ(goodOutput(run({"configure=p", "level=a"})), "a ERR\n");
}

TEST_F(ConfigFileWriting, MayBeDoneAgainAndAgain) {
    EXPECT_EQ(persist("", {"persist", "persist"}), (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(), levels);
    EXPECT_EQ(written("logging.conf.bak"), levels);
}

TEST_F(ConfigFileWriting, WithoutAFileOneIsMadeBesideTheExecutable) {
    support::copyFile(CONFIGURED_PROGRAM, path("p.exe"));
    EXPECT_EQ(support::runProgram(path("p.exe"), {"configure", "set=a:INFO", "level=a", "persist"}),
              (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(), levels);
    EXPECT_FALSE(exists("logging.conf.bak"));
}

// Found only at the next start: this process still has no file, and makes it anew.
TEST_F(ConfigFileWriting, FileMadeBesideTheExecutableIsReplacedByTheNextWriting) {
    support::copyFile(CONFIGURED_PROGRAM, path("p.exe"));
    EXPECT_EQ(support::runProgram(path("p.exe"),
                                  {"configure", "persist", "set=a:INFO", "level=a", "persist"}),
              (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(), levels);
    EXPECT_FALSE(exists("logging.conf.bak"));
}

TEST_F(ConfigFileWriting, RelativeFileIsWrittenWhereItWasRead) {
    writeFile("other.conf", "x = 1;");
    EXPECT_EQ(support::runProgram(CONFIGURED_PROGRAM,
                                  {"configure=p", "set=a:INFO", "level=a", "persist", "--",
                                   "--logcfg", "other.conf"},
                                  {}, path()),
              (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written("other.conf"), std::string("x = 1;\n") + levels);
    EXPECT_EQ(readFile("other.conf.bak"), "x = 1;");
}

// --- what is in the way -----------------------------------------------------------------------

// The text of a failure with the system's number `code` at the file.
std::string fsError(const std::string& file, DWORD code) {
    return std::string("vek::FsError: ") + vek::FsError(file, code).what() + "\n";
}

TEST_F(ConfigFileWriting, ReadOnlyFileStaysAsItIs) {
    writeFile("logging.conf", "x = 1;");
    SetFileAttributesA(path("logging.conf").c_str(), FILE_ATTRIBUTE_READONLY);
    if (std::ofstream(path("logging.conf"), std::ios::app)) {
        GTEST_SKIP() << "this system lets this user write read-only files";
    }
    EXPECT_EQ(run({"configure=p", "persist"}),
              (ProgramOutput{9, fsError(path("logging.conf"), ERROR_ACCESS_DENIED), ""}));
    EXPECT_EQ(readFile("logging.conf"), "x = 1;");
    EXPECT_EQ(readFile("logging.conf.bak"), "x = 1;");
    SetFileAttributesA(path("logging.conf").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(ConfigFileWriting, FileThatAnotherProcessLetsNobodyWriteStaysAsItIs) {
    writeFile("logging.conf", "x = 1;");
    const HANDLE other = CreateFileA(path("logging.conf").c_str(), GENERIC_READ, FILE_SHARE_READ,
                                     nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(run({"configure=p", "persist"}),
              (ProgramOutput{9, fsError(path("logging.conf"), ERROR_SHARING_VIOLATION), ""}));
    CloseHandle(other);
    EXPECT_EQ(readFile("logging.conf"), "x = 1;");
}

TEST_F(ConfigFileWriting, DirectoryInThePlaceOfTheFileStopsItAheadOfTheCopy) {
    const std::string file = path("logging.conf");
    EXPECT_EQ(
        runWith("x = 1;", {"configure=p", "run=del " + file + " && mkdir " + file, "persist"}),
        (ProgramOutput{9, "vek::RuntimeError: FileIOException\n", ""}));
    EXPECT_TRUE(std::filesystem::is_directory(file));
    EXPECT_FALSE(exists("logging.conf.bak"));
}

TEST_F(ConfigFileWriting, FileThatHasGoneStopsIt) {
    EXPECT_EQ(runWith("x = 1;", {"configure=p", "run=del " + path("logging.conf"), "persist"}),
              (ProgramOutput{9, "vek::RuntimeError: FileIOException\n", ""}));
    EXPECT_FALSE(exists("logging.conf"));
    EXPECT_FALSE(exists("logging.conf.bak"));
}

TEST_F(ConfigFileWriting, FileThatCannotBeParsedAnyMoreStopsItAheadOfTheCopy) {
    const std::string file = path("logging.conf");
    EXPECT_EQ(runWith("x = 1;", {"configure=p", "run=echo }>" + file, "persist"}),
              (ProgramOutput{9, "vek::RuntimeError: ParseException\n", ""}));
    EXPECT_EQ(written(), "}\n");
    EXPECT_FALSE(exists("logging.conf.bak"));
}

TEST_F(ConfigFileWriting, FileThatCouldNotBeParsedAtTheStartIsNotWrittenOver) {
    writeFile("logging.conf", "}");
    const ProgramOutput output = run({"configure=p", "persist"});
    EXPECT_EQ(output.exitCode, 9u);
    EXPECT_EQ(output.output, "vek::RuntimeError: ParseException\n");
    EXPECT_EQ(readFile("logging.conf"), "}");
}

TEST_F(ConfigFileWriting, FileBeyondTheLimitsIsNotWrittenOver) {
    const std::string text = "# " + std::string(2 << 20, 'x') + "\n";
    writeFile("logging.conf", text);
    EXPECT_EQ(run({"configure=p", "persist"}).output,
              "vek::RuntimeError: Configuration file '" + path("logging.conf") +
                  "' has more than 1048576 bytes in one piece\n");
    EXPECT_EQ(readFile("logging.conf"), text);
}

TEST_F(ConfigFileWriting, LoggerWhoseNameIsRefusedEndsItWithTheCopyMade) {
    for (const std::string name : {"net.tcp", "a b", "1a", "", "_a", "a=b"}) {
        writeFile("logging.conf", "x = 1;");
        DeleteFileA(path("logging.conf.bak").c_str());
        EXPECT_EQ(
            run({"configure=p", "set=" + name + ":INFO", "level=" + name, "persist"}),
            (ProgramOutput{9, name + " INFO own\nvek::RuntimeError: SettingNameException\n", ""}));
        EXPECT_EQ(readFile("logging.conf"), "x = 1;");
        EXPECT_EQ(readFile("logging.conf.bak"), "x = 1;");
    }
}

TEST_F(ConfigFileWriting, LoggerWhoseNameIsRefusedDoesNoHarmIfItFollowsTheDefault) {
    EXPECT_EQ(runWith("", {"configure=p", "level=net.tcp", "set=a:INFO", "level=a", "persist"}),
              (ProgramOutput{0, std::string("net.tcp WARN\n") + good, ""}));
    EXPECT_EQ(written(), levels);
}

TEST_F(ConfigFileWriting, ProcessWhoseNameIsRefusedEndsIt) {
    EXPECT_EQ(runWith("x = 1;", {"configure=y.tool", "persist"}),
              (ProgramOutput{9, "vek::RuntimeError: SettingNameException\n", ""}));
    EXPECT_EQ(readFile("logging.conf"), "x = 1;");
}

TEST_F(ConfigFileWriting, GroupsOfAnotherTypeEndIt) {
    for (const std::string text : {"processes = 1;", "processes = { p = \"x\"; };"}) {
        EXPECT_EQ(runWith(text, {"configure=p", "persist"}),
                  (ProgramOutput{9, "vek::RuntimeError: SettingTypeException\n", ""}))
            << text;
        EXPECT_EQ(readFile("logging.conf"), text);
        EXPECT_EQ(readFile("logging.conf.bak"), text);
    }
}

TEST_F(ConfigFileWriting, LevelsOfAnotherTypeAreReplaced) {
    EXPECT_EQ(persist("processes = { p = { loggers = 1; default_level = [ 1 ]; }; };"),
              (ProgramOutput{0, good, ""}));
    EXPECT_EQ(written(), levels);
}

TEST_F(ConfigFileWriting, WithoutACopyItIsWrittenNevertheless) {
    const std::string copy = path("logging.conf.bak");
    std::filesystem::create_directory(copy);
    EXPECT_EQ(persist("x = 1;"),
              (ProgramOutput{0, good,
                             "Couldn't create backup of '" + path("logging.conf") +
                                 "': " + vek::FsError(copy, ERROR_ACCESS_DENIED).what() + "\n"}));
    EXPECT_EQ(written(), std::string("x = 1;\n") + levels);
}

TEST_F(ConfigFileWriting, CopyThatAnotherProcessKeepsToItselfEndsItAheadOfTheWriting) {
    writeFile("logging.conf.bak", "kept");
    const HANDLE other = CreateFileA(path("logging.conf.bak").c_str(), GENERIC_READ,
                                     FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(runWith("x = 1;", {"configure=p", "persist"}),
              (ProgramOutput{9, fsError(path("logging.conf.bak"), ERROR_SHARING_VIOLATION), ""}));
    CloseHandle(other);
    EXPECT_EQ(readFile("logging.conf"), "x = 1;");
    EXPECT_EQ(readFile("logging.conf.bak"), "kept");
}

}  // namespace
