#include "vek/log/sinks/file_sink_config.h"

#include <iomanip>
#include <ios>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using vek::log::FileSinkConfig;

std::string textOf(const FileSinkConfig& config) {
    std::ostringstream text;
    EXPECT_EQ(&(text << config), &text);
    return text.str();
}

TEST(FileSinkConfig, InitialValues) {
    const FileSinkConfig config("C:\\x.log");
    EXPECT_EQ(config.path, "C:\\x.log");
    EXPECT_FALSE(config.rotate);
    EXPECT_EQ(config.max_archives, 0u);
    EXPECT_EQ(config.rotate_size, 0u);
    EXPECT_EQ(config.rotate_interval, 0u);
    EXPECT_TRUE(config.compress_archives);
    EXPECT_FALSE(config.enabled);
    EXPECT_TRUE(config.print_pids && config.print_tids && config.print_time);
    EXPECT_EQ(config.max_level, vek::log::INVALID);
    EXPECT_TRUE(config.format.empty());
    EXPECT_EQ(FileSinkConfig().path, "");
}

TEST(FileSinkConfig, TextHasSixLinesAndNoLineEndBehindTheLast) {
    EXPECT_EQ(textOf(FileSinkConfig("C:\\x.log")),
              "path: C:\\x.log\nrotate: 0\nmax_archives: 0\nrotate_size: 0 kb\n"
              "rotate_interval: 0 s\ncompress_archives: 1");
    FileSinkConfig config("x");
    config.rotate = true;
    config.max_archives = 4294967295u;
    config.rotate_size = 18446744073709551615u;
    config.rotate_interval = 604800;
    config.compress_archives = false;
    EXPECT_EQ(textOf(config),
              "path: x\nrotate: 1\nmax_archives: 4294967295\nrotate_size: 18446744073709551615 kb\n"
              "rotate_interval: 604800 s\ncompress_archives: 0");
}

TEST(FileSinkConfig, FlagsOfTheStreamDoNotChangeTheText) {
    FileSinkConfig config("x");
    config.max_archives = 30;
    config.rotate = true;
    std::ostringstream text;
    text << std::hex << std::showbase << std::boolalpha << std::showpos << config;
    EXPECT_EQ(text.str(), textOf(config));
}

}  // namespace
