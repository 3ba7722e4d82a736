#include "tools/log_application/follow/line_filter.h"

#include <gtest/gtest.h>

#include "tools/log_application/program/failure.h"

namespace {

using namespace log_application;

LogLine line(const std::string& text, vek::log::Level level = vek::log::INFO,
             const std::string& logger = "demo") {
    LogLine made;
    made.text = text;
    made.level = level;
    made.logger = logger;
    return made;
}

std::vector<TextPattern> patterns(const std::vector<std::string>& texts) {
    std::vector<TextPattern> made;
    for (const std::string& text : texts) {
        made.push_back(parsePattern("--include", text));
    }
    return made;
}

TEST(LineFilter, AcceptsEverythingUnlessTold) {
    const LineFilter filter{FilterOptions()};
    EXPECT_TRUE(filter.accepts(line("x", vek::log::TRACE)));
    EXPECT_TRUE(filter.accepts(LogLine()));
}

TEST(LineFilter, ALevelLetsTheGraverOnesThrough) {
    FilterOptions options;
    options.level = vek::log::WARN;
    const LineFilter filter(options);
    EXPECT_TRUE(filter.accepts(line("x", vek::log::ERR)));
    EXPECT_TRUE(filter.accepts(line("x", vek::log::WARN)));
    EXPECT_FALSE(filter.accepts(line("x", vek::log::INFO)));
    EXPECT_TRUE(filter.accepts(LogLine()));
}

TEST(LineFilter, OneOfTheIncludedHasToBeFound) {
    FilterOptions options;
    options.include = patterns({"^net", "disk$"});
    const LineFilter filter(options);
    EXPECT_TRUE(filter.accepts(line("net up")));
    EXPECT_TRUE(filter.accepts(line("full disk")));
    EXPECT_FALSE(filter.accepts(line("the net")));
}

TEST(LineFilter, NoneOfTheExcludedMayBeFound) {
    FilterOptions options;
    options.include = patterns({"net"});
    options.exclude = patterns({"noise", "\\d{3}"});
    const LineFilter filter(options);
    EXPECT_TRUE(filter.accepts(line("net 42")));
    EXPECT_FALSE(filter.accepts(line("net noise")));
    EXPECT_FALSE(filter.accepts(line("net 404")));
}

TEST(LineFilter, LoggersAreMatchedWhole) {
    FilterOptions options;
    options.loggers = {"net", "disk"};
    const LineFilter filter(options);
    EXPECT_TRUE(filter.accepts(line("x", vek::log::INFO, "disk")));
    EXPECT_FALSE(filter.accepts(line("x", vek::log::INFO, "network")));
    EXPECT_FALSE(filter.accepts(LogLine()));
}

TEST(LineFilter, ALineWhoseSearchIsGivenUpIsShown) {
    using Verdict = LineFilter::Verdict;
    const LogLine endless = line(std::string(1'000'000, 'x'));
    FilterOptions options;
    options.include = patterns({"^(x|y)*$"});
    EXPECT_EQ(LineFilter(options).judge(endless), Verdict::undecided);
    EXPECT_TRUE(LineFilter(options).accepts(endless));
    options.include = patterns({"^(x|y)*$", "x"});
    EXPECT_EQ(LineFilter(options).judge(endless), Verdict::shown);
    options.include = {};
    options.exclude = patterns({"^(x|y)*$"});
    EXPECT_EQ(LineFilter(options).judge(endless), Verdict::undecided);
    options.exclude = patterns({"^(x|y)*$", "x"});
    EXPECT_EQ(LineFilter(options).judge(endless), Verdict::hidden);
    options.exclude = patterns({"^(x|y)*$"});
    options.level = vek::log::ERR;
    EXPECT_EQ(LineFilter(options).judge(endless), Verdict::hidden);
}

TEST(ParseRegex, WhatIsNoneIsWrongUsage) {
    try {
        parsePattern("--include", "a(");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), exitUsage);
        EXPECT_EQ(failure.description(), "\"a(\", given to --include, is no regular expression.");
    }
}

}  // namespace
