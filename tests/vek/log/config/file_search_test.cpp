// Where logging.conf is looked for: beside the executable, and in each directory above it.
#include "tests/support/files.h"
#include "tests/vek/log/config/config_fixture.h"

namespace {

using namespace vek::test;

class ConfigFileSearch : public ConfigTest {
  protected:
    ConfigFileSearch() {
        std::filesystem::create_directories(path("a\\b\\etc"));
        std::filesystem::create_directories(path("a\\etc"));
        std::filesystem::create_directories(path("etc"));
        support::copyFile(CONFIGURED_PROGRAM, program());
    }

    std::string program() const { return path("a\\b\\p.exe"); }

    void place(const std::string& directory, const std::string& level) const {
        writeFile(directory + "logging.conf", "defaults = { default_level = \"" + level + "\"; };");
    }

    // The level of the file that is found, and which that is.
    std::string found() const {
        const ProgramOutput output =
            support::runProgram(program(), {"configure=p", "report", "--", "--verbose-log"});
        EXPECT_EQ(output.exitCode, 0u);
        EXPECT_EQ(output.error, "");
        return output.output;
    }

    std::string at(const std::string& file, const std::string& level) const {
        return "Using veklog config file '" + path(file) + "'\ninstance p\ndefault " + level + "\n";
    }
};

TEST_F(ConfigFileSearch, NearestFileIsTakenAndEtcComesBehindItsDirectory) {
    EXPECT_EQ(found(), "instance p\ndefault WARN\n");
    place("etc\\", "ERR");
    EXPECT_EQ(found(), at("etc\\logging.conf", "ERR"));
    place("", "INFO");
    EXPECT_EQ(found(), at("logging.conf", "INFO"));
    place("a\\etc\\", "DEBUG");
    EXPECT_EQ(found(), at("a\\etc\\logging.conf", "DEBUG"));
    place("a\\", "TRACE");
    EXPECT_EQ(found(), at("a\\logging.conf", "TRACE"));
    place("a\\b\\etc\\", "OFF");
    EXPECT_EQ(found(), at("a\\b\\etc\\logging.conf", "OFF"));
    place("a\\b\\", "INFO");
    EXPECT_EQ(found(), at("a\\b\\logging.conf", "INFO"));
}

TEST_F(ConfigFileSearch, CurrentDirectoryDoesNotCount) {
    std::filesystem::create_directory(path("c"));
    place("c\\", "INFO");
    EXPECT_EQ(support::runProgram(program(), {"configure=p", "report"}, {}, path("c")),
              (ProgramOutput{0, "instance p\ndefault WARN\n", ""}));
}

TEST_F(ConfigFileSearch, DirectoryOfThatNameIsFoundToo) {
    place("", "INFO");
    std::filesystem::create_directory(path("a\\b\\logging.conf"));
    EXPECT_EQ(support::runProgram(program(), {"configure=p", "report"}),
              (ProgramOutput{9, "libconfig::FileIOException: FileIOException\n", ""}));
}

TEST_F(ConfigFileSearch, NamedFileIsTakenInTheirPlace) {
    place("a\\b\\", "INFO");
    place("etc\\", "TRACE");
    EXPECT_EQ(support::runProgram(program(), {"configure=p", "report", "--", "--logcfg",
                                              path("etc\\logging.conf")}),
              (ProgramOutput{0, "instance p\ndefault TRACE\n", ""}));
}

TEST_F(ConfigFileSearch, EmptyNameMeansNoFileThoughThereIsOne) {
    place("a\\b\\", "INFO");
    EXPECT_EQ(support::runProgram(program(), {"configure=p", "report", "--", "--logcfg", ""}),
              (ProgramOutput{0, "instance p\ndefault WARN\n", ""}));
}

}  // namespace
