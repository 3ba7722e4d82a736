// Runs of configured_program for the settings of logging.conf.
#pragma once

#include <algorithm>
#include <string>

#include "tests/vek/log/config/config_fixture.h"

namespace vek::test {

// What `report` prints of process "p" without any settings.
inline const std::string unchanged = "instance p\ndefault WARN\n";

class ConfigFileTest : public ConfigTest {
  protected:
    // What `report` prints with `text` as the file, in process "p".
    std::string reportWith(const std::string& text) const {
        return goodOutput(runWith(text, {"configure=p", "report"}));
    }

    // What `report` prints of sinks with `settings` as those of all processes.
    std::string sinksWith(const std::string& settings) const {
        const std::string output = outputWith(settings);
        EXPECT_TRUE(output.starts_with(unchanged)) << output;
        return output.substr(std::min(output.size(), unchanged.size()));
    }
};

}  // namespace vek::test
