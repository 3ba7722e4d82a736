#include "tools/log_application/command_line.h"

#include <sstream>

#include <gtest/gtest.h>

#include "tools/log_application/program/failure.h"

namespace {

using namespace log_application;
using Texts = std::vector<std::string>;

Options parsed(const Texts& arguments) {
    std::ostringstream output;
    const std::optional<Options> options = parseCommandLine(arguments, output);
    EXPECT_TRUE(options.has_value());
    EXPECT_EQ(output.str(), "");
    return options.value_or(Options());
}

// The message of the wrong usage that `arguments` are; "" if they are good.
std::string refused(const Texts& arguments) {
    std::ostringstream output;
    try {
        parseCommandLine(arguments, output);
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), exitUsage);
        EXPECT_FALSE(failure.whatNext().empty());
        return failure.description();
    }
}

TEST(CommandLine, KnowsEachCommand) {
    EXPECT_EQ(parsed({"ps"}).command, Command::ps);
    EXPECT_EQ(parsed({"levels"}).command, Command::levels);
    EXPECT_EQ(parsed({"set", "a=INFO"}).command, Command::set);
    EXPECT_EQ(parsed({"sinks"}).command, Command::sinks);
    EXPECT_EQ(parsed({"save"}).command, Command::save);
    EXPECT_EQ(parsed({"tail"}).command, Command::tail);
    EXPECT_EQ(parsed({"forward", "--to", "syslog+tcp://h:1"}).command, Command::forward);
}

TEST(CommandLine, NamesProcessesInEachWay) {
    const Selection selection = parsed({"levels", "--name", "a", "--name", "b c", "--pid", "7",
                                        "--connect", "127.0.0.1:80", "--host", "10.0.0.255"})
                                    .selection;
    EXPECT_EQ(selection.names, (Texts{"a", "b c"}));
    EXPECT_EQ(selection.pids, (std::vector<std::uint32_t>{7}));
    EXPECT_EQ(selection.connect, (std::vector<Endpoint>{{"127.0.0.1", 80}}));
    EXPECT_EQ(selection.hosts, (std::vector<Endpoint>{{"10.0.0.255", 30451}}));
    EXPECT_TRUE(parsed({"save", "--all"}).selection.all);
}

TEST(CommandLine, TakesValuesBehindAnEqualsSignToo) {
    const Options options =
        parsed({"tail", "--name=a=b", "--include", "--level=INFO", "--level=warn"});
    EXPECT_EQ(options.selection.names, (Texts{"a=b"}));
    EXPECT_EQ(options.follow.filter.level, vek::log::WARN);
    EXPECT_EQ(options.follow.filter.include.size(), 1u);
}

TEST(CommandLine, SetTakesLevelsBetweenItsOptions) {
    const SetOptions set =
        parsed({"set", "net=DEBUG", "--name", "x", "disk=OFF", "--default", "INFO", "--for", "10m"})
            .set;
    ASSERT_EQ(set.changes.size(), 2u);
    EXPECT_EQ(set.changes[0].logger, "net");
    EXPECT_EQ(set.changes[1].level, vek::log::OFF);
    EXPECT_EQ(set.defaultLevel, vek::log::INFO);
    EXPECT_EQ(set.forMs, 600'000);
}

TEST(CommandLine, TailTakesAllItsOptions) {
    const Options options = parsed(
        {"tail", "--level",   "INFO", "--include",   "a",        "--include", "b",     "--exclude",
         "c",    "--logger",  "l",    "--output",    "text",     "--format",  "{msg}", "--expect",
         "done", "--timeout", "30s",  "--reconnect", "--buffer", "5"});
    EXPECT_EQ(options.follow.filter.level, vek::log::INFO);
    EXPECT_EQ(options.follow.filter.include.size(), 2u);
    EXPECT_EQ(options.follow.filter.exclude.size(), 1u);
    EXPECT_EQ(options.follow.filter.loggers, (Texts{"l"}));
    EXPECT_EQ(options.tail.format, "{msg}");
    EXPECT_TRUE(options.tail.expect.has_value());
    EXPECT_EQ(options.follow.timeoutMs, 30'000);
    EXPECT_TRUE(options.follow.reconnect);
    EXPECT_EQ(options.follow.bufferLines, 5u);
    EXPECT_EQ(parsed({"tail", "--output", "json"}).output, OutputKind::json);
    EXPECT_EQ(parsed({"tail", "--output", "raw"}).output, OutputKind::raw);
    EXPECT_EQ(parsed({"tail"}).output, OutputKind::text);
}

TEST(CommandLine, ForwardTakesAllItsOptions) {
    const Options options =
        parsed({"forward", "--to", "syslog+tcp://logs.example.com:601", "--level", "INFO",
                "--include", "a", "--exclude", "c", "--logger", "l", "--facility", "local5",
                "--timeout", "30s", "--buffer", "5"});
    EXPECT_EQ(options.forward.to.text(), "logs.example.com:601");
    EXPECT_EQ(options.forward.facility, 21);
    EXPECT_EQ(options.follow.filter.level, vek::log::INFO);
    EXPECT_EQ(options.follow.filter.include.size(), 1u);
    EXPECT_EQ(options.follow.filter.exclude.size(), 1u);
    EXPECT_EQ(options.follow.filter.loggers, (Texts{"l"}));
    EXPECT_EQ(options.follow.timeoutMs, 30'000);
    EXPECT_EQ(options.follow.bufferLines, 5u);
    // It always goes on when a process ends.
    EXPECT_TRUE(options.follow.reconnect);
    EXPECT_EQ(parsed({"forward", "--to", "syslog+tcp://h:1"}).forward.facility, 1);
}

TEST(CommandLine, RefusesWhatItCannotUnderstand) {
    for (const Texts& arguments : std::vector<Texts>{
             {},
             {""},
             {"PS"},
             {"--name", "x"},
             {"ps", "x"},
             {"ps", "--connect", "127.0.0.1:1"},
             {"ps", "--all"},
             {"ps", "--output", "raw"},
             {"levels", "--output", "xml"},
             {"levels", "--pid", "x"},
             {"levels", "--pid", "-1"},
             {"levels", "--pid", "4294967296"},
             {"levels", "--name"},
             {"levels", "--connect", "here"},
             {"set"},
             {"set", "--name", "x"},
             {"set", "a=INFO", "--default", "DEFAULT"},
             {"set", "a=INFO", "--for", "soon"},
             {"set", "--nosuch"},
             {"save", "a=INFO"},
             {"save", "--output", "json"},
             {"tail", "--level", "LOUD"},
             {"tail", "--level", "INFO", "--level", "WARN"},
             {"tail", "--include", "("},
             {"tail", "--exclude", "["},
             {"tail", "--expect", "*"},
             {"tail", "--timeout", "-1"},
             {"tail", "--buffer", "0"},
             {"tail", "--buffer", "many"},
             {"tail", "--output", "json", "--format", "{msg}"},
             {"tail", "--nosuch"},
             {"tail", "--to", "syslog+tcp://h:1"},
             {"forward"},
             {"forward", "--to", "h:1"},
             {"forward", "--to", "syslog+tcp://h:1", "--facility", "local8"},
             {"forward", "--to", "syslog+tcp://h:1", "--buffer", "0"},
             {"forward", "--to", "syslog+tcp://h:1", "--reconnect"},
             {"forward", "--to", "syslog+tcp://h:1", "--output", "json"},
         }) {
        EXPECT_NE(refused(arguments), "") << testing::PrintToString(arguments);
    }
}

TEST(CommandLine, ErrorsShowControlCharactersEscaped) {
    EXPECT_EQ(refused({"\x1b[2J"}), "There is no command \"\\x1B[2J\".");
}

TEST(CommandLine, HelpIsGivenWhereverItIsAskedFor) {
    for (const Texts& arguments : std::vector<Texts>{
             {"--help"}, {"-h"}, {"help"}, {"tail", "--help"}, {"set", "--for", "x", "-h"}}) {
        std::ostringstream output;
        EXPECT_FALSE(parseCommandLine(arguments, output));
        EXPECT_NE(output.str(), "");
    }
}

}  // namespace
