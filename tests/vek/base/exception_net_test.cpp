#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

template <class E>
void expectTakesTheLastSocketError(int number) {
    WSASetLastError(number);
    const E error;
    WSASetLastError(0);
    EXPECT_EQ(error.code(), static_cast<std::uint32_t>(number));
    testing::internal::CaptureStderr();
    EXPECT_STREQ(error.what(), vek::OsError(static_cast<std::uint32_t>(number)).what());
    testing::internal::GetCapturedStderr();
    try {
        error.raise();
    } catch (const vek::NetError& raised) {
        EXPECT_NE(dynamic_cast<const E*>(&raised), nullptr);
        EXPECT_EQ(raised.code(), static_cast<std::uint32_t>(number));
    }
}

TEST(NoSuchAddress, TakesTheLastSocketErrorByItself) {
    expectTakesTheLastSocketError<vek::NoSuchAddress>(WSAEADDRNOTAVAIL);
}

TEST(NoPeer, TakesTheLastSocketErrorByItself) {
    expectTakesTheLastSocketError<vek::NoPeer>(WSAECONNREFUSED);
}

TEST(NoNetwork, TakesTheLastSocketErrorByItself) {
    expectTakesTheLastSocketError<vek::NoNetwork>(WSAENETDOWN);
}

}  // namespace
