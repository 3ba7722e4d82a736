#include "vek/base/optional_function.h"

#include <future>
#include <thread>

#include <gtest/gtest.h>

namespace {

using vek::OptionalFunctions;
using vek::resolveFunction;

struct ProcessFunctions {
    decltype(&::GetCurrentProcessId) processId;
    decltype(&::MulDiv) mulDiv;
};

ProcessFunctions lookUpProcessFunctions() {
    const vek::SharedLib& library = vek::kernel32Library();
    return {.processId =
                resolveFunction<decltype(&::GetCurrentProcessId)>(library, "GetCurrentProcessId"),
            .mulDiv = resolveFunction<decltype(&::MulDiv)>(library, "MulDiv")};
}

ProcessFunctions lookUpNothing() {
    throw vek::RuntimeError("missing");
}

TEST(ResolveFunction, GivesAFunctionThatCanBeCalled) {
    const ProcessFunctions functions = lookUpProcessFunctions();
    EXPECT_EQ(functions.processId(), GetCurrentProcessId());
    EXPECT_EQ(functions.mulDiv(6, 7, 2), 21);
}

TEST(ResolveFunction, ThrowsForAMissingOne) {
    EXPECT_THROW(
        resolveFunction<decltype(&::MulDiv)>(vek::kernel32Library(), "NoSuchFunctionAtAll"),
        vek::SharedLibError);
}

TEST(OptionalFunctions, AreMissingUntilTheyAreLookedUp) {
    OptionalFunctions<ProcessFunctions> functions;
    EXPECT_EQ(functions.get(), nullptr);
    functions.resolve(lookUpProcessFunctions);
    ASSERT_NE(functions.get(), nullptr);
    EXPECT_EQ(functions.get()->processId(), GetCurrentProcessId());
}

TEST(OptionalFunctions, AreLookedUpOnce) {
    OptionalFunctions<ProcessFunctions> functions;
    int lookUps = 0;
    for (int i = 0; i < 3; ++i) {
        functions.resolve([&lookUps] {
            ++lookUps;
            return lookUpProcessFunctions();
        });
    }
    EXPECT_EQ(lookUps, 1);
    functions.resolve(lookUpNothing);
    EXPECT_NE(functions.get(), nullptr);
}

TEST(OptionalFunctions, FailedLookUpIsSwallowedAndNotRepeated) {
    OptionalFunctions<ProcessFunctions> functions;
    EXPECT_NO_THROW(functions.resolve(lookUpNothing));
    EXPECT_EQ(functions.get(), nullptr);
    functions.resolve(lookUpProcessFunctions);
    EXPECT_EQ(functions.get(), nullptr);
}

TEST(OptionalFunctions, ResetForgetsThemAndAllowsAnotherLookUp) {
    OptionalFunctions<ProcessFunctions> functions;
    functions.resolve(lookUpProcessFunctions);
    functions.reset();
    EXPECT_EQ(functions.get(), nullptr);
    functions.resolve(lookUpNothing);
    EXPECT_EQ(functions.get(), nullptr);
    functions.reset();
    functions.resolve(lookUpProcessFunctions);
    EXPECT_NE(functions.get(), nullptr);
}

TEST(OptionalFunctions, SecondThreadDoesNotWaitForALookUpThatHasBegun) {
    OptionalFunctions<ProcessFunctions> functions;
    std::promise<void> begun;
    std::promise<void> goOn;
    std::thread first([&] {
        functions.resolve([&] {
            begun.set_value();
            goOn.get_future().wait();
            return lookUpProcessFunctions();
        });
    });
    begun.get_future().wait();
    // Would block, or look them up by itself, if it waited or didn't count.
    functions.resolve([]() -> ProcessFunctions {
        ADD_FAILURE() << "looked up twice";
        return {};
    });
    EXPECT_EQ(functions.get(), nullptr);
    goOn.set_value();
    first.join();
    EXPECT_NE(functions.get(), nullptr);
}

TEST(OptionalFunctions, OneOfManyThreadsLooksThemUp) {
    for (int round = 0; round < 100; ++round) {
        OptionalFunctions<ProcessFunctions> functions;
        std::atomic<int> lookUps = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                functions.resolve([&lookUps] {
                    ++lookUps;
                    return lookUpProcessFunctions();
                });
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(lookUps, 1);
        ASSERT_NE(functions.get(), nullptr);
    }
}

}  // namespace
