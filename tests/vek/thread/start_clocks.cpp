// The clocks are started as in every program, so that deadlines are exact to the millisecond.
#include <gtest/gtest.h>

#include "vek/time/clock_source.h"

namespace {

class StartClocks : public testing::Environment {
  public:
    void SetUp() override {
        vek::time::initClocks();
        vek::time::initClockOrigin();
    }
};

const testing::Environment* const startClocks = testing::AddGlobalTestEnvironment(new StartClocks);

}  // namespace
