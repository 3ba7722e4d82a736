#include "vek/thread/condition_functions.h"

#include "vek/base/optional_function.h"

namespace vek::thread {

namespace {

OptionalFunctions<ConditionFunctions> optionalFunctions;

ConditionFunctions lookUp(const SharedLib& library) {
    return {
        .initialize = resolveFunction<decltype(&::InitializeConditionVariable)>(
            library, "InitializeConditionVariable"),
        .wakeOne =
            resolveFunction<decltype(&::WakeConditionVariable)>(library, "WakeConditionVariable"),
        .wakeAll = resolveFunction<decltype(&::WakeAllConditionVariable)>(
            library, "WakeAllConditionVariable"),
        .sleep = resolveFunction<decltype(&::SleepConditionVariableCS)>(library,
                                                                        "SleepConditionVariableCS"),
    };
}

}  // namespace

void resolveConditionFunctions() {
    optionalFunctions.resolve([] { return lookUp(kernel32Library()); });
}

void resolveConditionFunctions(const SharedLib& library) {
    optionalFunctions.resolve([&library] { return lookUp(library); });
}

void resetConditionFunctions() {
    optionalFunctions.reset();
}

const ConditionFunctions* nativeConditions() {
    return optionalFunctions.get();
}

}  // namespace vek::thread
