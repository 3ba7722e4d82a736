// What ends the reading of logging.conf, what counts afterwards, and hostile files.
#include <chrono>

#include "tests/vek/log/config/config_fixture.h"
#include "vek/base/windows.h"
#include "vek/log/config/file_check.h"

namespace {

using namespace vek::test;

class ConfigFileFailure : public ConfigTest {
  protected:
    // Runs with `text`, and expects that the program goes on at its initial settings, with
    // `error` told.
    void expectReport(const std::string& text, const std::string& error) const {
        EXPECT_EQ(runWith(text, {"configure=p", "report", "log=WARN:a:text"}),
                  (ProgramOutput{0, "instance p\ndefault WARN\n", error}));
    }

    // The same for a file that can't be parsed.
    void expectParseError(const std::string& text, int line, const std::string& problem) const {
        expectReport(text, "Couldn't parse libconfig configuration file '" + path("logging.conf") +
                               "' at line " + std::to_string(line) + ": '" + problem + "'.\n");
    }
};

// --- the three handlers -----------------------------------------------------------------------

TEST_F(ConfigFileFailure, ParseErrorIsToldWithItsLine) {
    expectParseError("defaults = {\n  default_level = \n};\n", 3, "syntax error");
    expectParseError("defaults = { default_level = \"INFO\"; default_level = \"ERR\"; };", 1,
                     "duplicate setting name");
    expectParseError("defaults = { x = [1, \"a\"]; };", 1, "mismatched element type in array");
}

TEST_F(ConfigFileFailure, NothingOfAFileThatCannotBeParsedCounts) {
    expectParseError("defaults = { default_level = \"INFO\"; };\n}", 2, "syntax error");
}

TEST_F(ConfigFileFailure, ExceptionOfTheFrameworkIsToldByItsDescription) {
    expectReport("defaults = { sink = { stdout = { max_level = \"loud\"; }; }; };",
                 "Usage error: Invalid LEVEL string \"loud\"\n");
}

TEST_F(ConfigFileFailure, BadSizeAndIntervalAreToldWithFileAndSetting) {
    const struct {
        std::string setting;
        std::string name;
        std::string reason;
    } rows[] = {
        {"rotate_size = \"10\"", "rotate_size",
         "Parse error: Couldn't parse '10': Couldn't find unit specification after value"},
        {"rotate_size = \"ten mb\"", "rotate_size",
         "Parse error: Couldn't parse 'ten mb': no positive integer could be parsed"},
        {"rotate_size = \"10 xb\"", "rotate_size",
         "Parse error: Couldn't parse 'xb': couldn't deduce file size unit"},
        {"rotate_interval = \"1 fortnight\"", "rotate_interval",
         "Parse error: Couldn't parse 'fortnight': couldn't deduce time unit"},
        {"rotate_interval = \"\"", "rotate_interval",
         "Parse error: Couldn't parse '': no positive integer could be parsed"},
    };
    for (const auto& row : rows) {
        expectReport(
            "defaults = { sink = { file = ( { path = \"x\"; " + row.setting + "; } ); }; };",
            "Parse error: Couldn't parse '" + path("logging.conf") + ": defaults.sink.file.[0]." +
                row.name + "': " + row.reason + "\n");
    }
}

TEST_F(ConfigFileFailure, SettingOfTheWrongTypeIsToldWithoutALineEnd) {
    expectReport("defaults = { sink = { file = { path = \"x\"; rotate_size = 10; }; }; };",
                 "Invalid setting in libconfig configuration file '" + path("logging.conf") +
                     "' in element 'defaults.sink.file.rotate_size': SettingTypeException");
}

TEST_F(ConfigFileFailure, WhatWasReadAheadOfItStandsAndNothingBehindIt) {
    EXPECT_EQ(runWith("defaults = { default_level = \"INFO\"; sink = {"
                      " stdout = { print_time = true; enabled = true; };"
                      " debugger = { enabled = true; print_pids = true; max_level = \"loud\";"
                      " format = \"x\"; }; file = { path = \"x\"; }; }; evidence = {"
                      " stdout = { enabled = false; }; }; loggers = { a = \"ERR\"; }; };"
                      "processes = { p = { default_level = \"TRACE\"; }; };",
                      {"configure=p", "report", "level=a"}),
              (ProgramOutput{0,
                             "instance p\ndefault INFO\nstdout enabled time max=INVALID format=0\n"
                             "debugger enabled pids max=INVALID format=0\na INFO\n",
                             "Usage error: Invalid LEVEL string \"loud\"\n"}));
}

TEST_F(ConfigFileFailure, InTheProcessGroupTheDefaultsStand) {
    EXPECT_EQ(runWith("defaults = { sink = { file = { path = \"x\"; }; }; };"
                      "processes = { p = { sink = { file = ( { path = \"y\"; },"
                      " { path = \"z\"; max_archives = \"3\"; } ); }; }; };",
                      {"configure=p", "report"})
                  .output,
              "instance p\ndefault WARN\n"
              "file#0 pids tids time max=INVALID format=0 path=x archives=3 size=5120 "
              "interval=604800 compress\n"
              "file#1 pids tids time max=INVALID format=0 path=y archives=3 size=5120 "
              "interval=604800 compress\n");
}

TEST_F(ConfigFileFailure, CommandLineCountsBehindIt) {
    EXPECT_EQ(runWith("}", {"configure=p", "report"}, {"--log-level", "INFO"}).output,
              "instance p\ndefault INFO\n");
}

TEST_F(ConfigFileFailure, ColorsForcedWithoutAConsoleLeaveConfigure) {
    const ProgramOutput forced = runWith("}", {"configure=p"}, {}, {{"VEK_FORCE_COLOR", "1"}});
    EXPECT_EQ(forced.exitCode, 9u);
    EXPECT_TRUE(forced.output.starts_with("vek::OsError: ")) << forced.output;
    EXPECT_EQ(forced.error, "");
}

// --- files that can't be read -----------------------------------------------------------------

TEST_F(ConfigFileFailure, DirectoryInThePlaceOfTheFileLeavesConfigure) {
    std::filesystem::create_directory(path("logging.conf"));
    EXPECT_EQ(run({"configure"}),
              (ProgramOutput{9, "libconfig::FileIOException: FileIOException\n", ""}));
}

TEST_F(ConfigFileFailure, FileThatAnotherProcessKeepsToItselfLeavesConfigure) {
    writeFile("logging.conf", "");
    const HANDLE other = CreateFileA(path("logging.conf").c_str(), GENERIC_READ, 0, nullptr,
                                     OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(run({"configure"}),
              (ProgramOutput{9, "libconfig::FileIOException: FileIOException\n", ""}));
    CloseHandle(other);
}

// The parser would end the process where the system lets it open the file and not read it.
TEST_F(ConfigFileFailure, FileLockedByAnotherProcessIsReadOrToldAndTheProgramGoesOn) {
    writeFile("logging.conf", "defaults = { default_level = \"INFO\"; };");
    const HANDLE other =
        CreateFileA(path("logging.conf").c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    OVERLAPPED start = {};
    ASSERT_NE(LockFileEx(other, LOCKFILE_EXCLUSIVE_LOCK, 0, 4, 0, &start), 0);
    const ProgramOutput locked = run({"configure=p", "report"});
    CloseHandle(other);
    EXPECT_EQ(locked.exitCode, 0u);
    if (locked.error.empty()) {
        // A system that doesn't hold readers to locks, as Wine.
        EXPECT_EQ(locked.output, "instance p\ndefault INFO\n");
    } else {
        EXPECT_EQ(locked.output, "instance p\ndefault WARN\n");
        EXPECT_TRUE(locked.error.ends_with("(33)\n")) << locked.error;
    }
}

// --- hostile files ----------------------------------------------------------------------------

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    while (count-- > 0) {
        result += text;
    }
    return result;
}

std::string manySettings(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += "a" + std::to_string(i) + "=1;\n";
    }
    return text;
}

constexpr char good[] = "defaults = { default_level = \"INFO\"; };";
constexpr char goodReport[] = "instance p\ndefault INFO\n";
constexpr std::size_t tenMegabytes = 10 << 20;

TEST_F(ConfigFileFailure, TenMegabytesOfCommentsAreRead) {
    const std::string line = "# " + std::string(78, 'x') + "\n";
    EXPECT_EQ(runWith(repeated(line, tenMegabytes / line.size()) + good, {"configure=p", "report"}),
              (ProgramOutput{0, goodReport, ""}));
    EXPECT_EQ(
        runWith("/*" + std::string(tenMegabytes, '=') + "*/" + good, {"configure=p", "report"}),
        (ProgramOutput{0, goodReport, ""}));
}

TEST_F(ConfigFileFailure, TenMegabytesInOnePieceAreRefusedAtOnce) {
    const auto start = std::chrono::steady_clock::now();
    const std::string report = "Configuration file '" + path("logging.conf") +
                               "' has more than 1048576 bytes in one piece\n";
    const std::string filling(tenMegabytes, 'x');
    expectReport("# " + filling + "\n" + good, report);
    expectReport("a = \"" + filling + "\";\n" + good, report);
    expectReport(filling + " = 1;\n" + good, report);
    expectReport(std::string(tenMegabytes, ' ') + good, report);
    expectReport(filling, report);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST_F(ConfigFileFailure, TooManySettingsAreRefusedAtOnce) {
    const std::string report =
        "Configuration file '" + path("logging.conf") + "' has more than 5000 settings\n";
    expectReport(manySettings(700000), report);  // about 10 MB
    expectReport(manySettings(5000) + good, report);
    EXPECT_EQ(runWith(manySettings(4998) + good, {"configure=p", "report"}),
              (ProgramOutput{0, goodReport, ""}));
}

TEST_F(ConfigFileFailure, TooManyElementsAreRefusedAtOnce) {
    const std::string report = "Configuration file '" + path("logging.conf") +
                               "' has more than 500000 elements of lists\n";
    expectReport("a = (" + repeated("1,", tenMegabytes / 2) + "1);" + good, report);
    expectReport("a = [" + repeated("1,", 500001) + "1];" + good, report);
    EXPECT_EQ(runWith("a = [" + repeated("1,", 500000) + "1];" + good, {"configure=p", "report"}),
              (ProgramOutput{0, goodReport, ""}));
}

TEST_F(ConfigFileFailure, TooLargeAFileIsRefused) {
    expectReport(
        repeated("#\n", (vek::log::maxConfigSize + 2) / 2) + good,
        "Configuration file '" + path("logging.conf") + "' has more than 16777216 bytes\n");
}

TEST_F(ConfigFileFailure, DeepNestingIsReadOrRefusedByTheParser) {
    EXPECT_EQ(
        runWith(repeated("a={", 1500) + repeated("}", 1500) + good, {"configure=p", "report"}),
        (ProgramOutput{0, goodReport, ""}));
    EXPECT_EQ(runWith("a=" + repeated("(", 4000) + repeated(")", 4000) + ";" + good,
                      {"configure=p", "report"}),
              (ProgramOutput{0, goodReport, ""}));
    for (const std::size_t depth : {10000u, 100000u}) {
        expectParseError("a=" + repeated("(", depth) + repeated(")", depth), 1, "memory exhausted");
    }
    // With as many settings as pass.
    expectParseError(repeated("a={", 5000) + repeated("}", 5000), 1, "memory exhausted");
}

TEST_F(ConfigFileFailure, IncludedSettingsCount) {
    writeFile("other.conf", "default_level = \"INFO\";");
    writeFile("logging.conf", "defaults = {\n@include \"" + escaped(path("other.conf")) + "\"\n};");
    EXPECT_EQ(run({"configure=p", "report"}), (ProgramOutput{0, goodReport, ""}));
}

TEST_F(ConfigFileFailure, BadIncludesAreParseErrors) {
    expectParseError("@include \"" + escaped(path("missing")) + "\"\n", 1,
                     "cannot open include file");
    expectParseError("@include \"" + escaped(path()) + "\"\n", 1, "cannot open include file");
    expectParseError("@include \"\"\n", 1, "cannot open include file");
    expectParseError("@include \"" + escaped(path("logging.conf")) + "\"\n", 1,
                     "include file nesting too deep");
    // One without an end reaches up to that of the file, without a report.
    expectReport("@include \"unterminated\n", "");
}

TEST_F(ConfigFileFailure, BinaryBytesAreParseErrors) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    expectParseError(all, 1, "syntax error");
    expectParseError(std::string(100000, '\0'), 1, "syntax error");
    expectParseError("\xEF\xBB\xBF" + std::string(good), 1, "syntax error");  // a byte order mark
    expectParseError("\xFF\xFE" + std::string("d\0", 2), 1, "syntax error");  // UTF-16
    expectParseError("a = \"" + all, 2, "syntax error");
}

TEST_F(ConfigFileFailure, BinaryBytesWithinTextsAreTextsLikeOthers) {
    const ProgramOutput run =
        runWith("defaults = { default_level = \"\xFF\x80\"; };", {"configure=p", "report"});
    EXPECT_EQ(run, (ProgramOutput{0, "instance p\ndefault WARN\n",
                                  "Invalid value for setting \"default_level\": \"\xFF\x80\"\n"}));
    // A text ends at a zero byte.
    EXPECT_EQ(runWith(std::string("defaults = { default_level = \"INFO\0x\"; };", 41),
                      {"configure=p", "report"}),
              (ProgramOutput{0, goodReport, ""}));
}

TEST_F(ConfigFileFailure, NumbersBeyondTheirTypesDoNoHarm) {
    EXPECT_EQ(runWith("a = 99999999999999999999; b = 0xFFFFFFFFFFFFFFFFFFFF; c = 1e999; " +
                          std::string(good),
                      {"configure=p", "report"}),
              (ProgramOutput{0, goodReport, ""}));
}

TEST_F(ConfigFileFailure, FormatOfManyKeywordsIsCompiled) {
    EXPECT_EQ(outputWith("sink = { stdout = { enabled = true; format = \"" +
                         repeated("{msg}", 10000) + "\"; }; };"),
              "instance p\ndefault WARN\nstdout enabled max=INVALID format=20001\n");
}

}  // namespace
