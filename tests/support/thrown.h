// What a call throws.
#pragma once

#include <cstdint>
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include "vek/exception.h"

namespace vek::test {

inline std::uint32_t codeOf(const FsError& error) {
    return error.osError().code();
}
inline std::uint32_t codeOf(const OsError& error) {
    return error.code();
}

// The error number of what `f` throws, which must be exactly an `Expected`; 0 and a failure
// otherwise.
template <class Expected, class F>
std::uint32_t codeThrownBy(F f) {
    try {
        f();
        ADD_FAILURE() << "nothing thrown";
    } catch (const Expected& error) {
        EXPECT_EQ(typeid(error), typeid(Expected)) << error.what();
        return codeOf(error);
    } catch (const Exception& error) {
        ADD_FAILURE() << error.what();
    }
    return 0;
}

// The text of what `f` throws, which must be exactly an `Expected`; empty and a failure otherwise.
template <class Expected, class F>
std::string textThrownBy(F f) {
    try {
        f();
        ADD_FAILURE() << "nothing thrown";
    } catch (const Expected& error) {
        EXPECT_EQ(typeid(error), typeid(Expected)) << error.what();
        return error.what();
    } catch (const Exception& error) {
        ADD_FAILURE() << error.what();
    }
    return "";
}

}  // namespace vek::test
