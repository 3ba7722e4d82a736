#include "tools/log_application/connection/endpoint.h"

#include <gtest/gtest.h>

#include "tools/log_application/program/failure.h"

namespace {

using namespace log_application;
using namespace std::string_literals;

TEST(Endpoint, IsAnAddressAndAPort) {
    EXPECT_EQ(parseEndpoint("--connect", "127.0.0.1:49731"), (Endpoint{"127.0.0.1", 49731}));
    EXPECT_EQ(parseEndpoint("--connect", "localhost:1").text(), "127.0.0.1:1");
    EXPECT_EQ(parseEndpoint("--connect", "255.255.255.255:65535").port, 65535);
}

TEST(Endpoint, NeedsNoPortWhereThereIsADefault) {
    EXPECT_EQ(parseEndpoint("--host", "10.1.2.3", 30451), (Endpoint{"10.1.2.3", 30451}));
    EXPECT_EQ(parseEndpoint("--host", "10.1.2.3:7", 30451), (Endpoint{"10.1.2.3", 7}));
}

TEST(Endpoint, AnythingElseIsWrongUsage) {
    for (const std::string& text :
         {""s, ":"s, "127.0.0.1"s, "127.0.0.1:"s, "127.0.0.1:0"s, "127.0.0.1:65536"s,
          "127.0.0.1:-1"s, "127.0.0.1:1x"s, "127.0.0.1: 1"s, "256.0.0.1:1"s, "1.2.3:4"s,
          "example:80"s, "::1:80"s, "127.0.0.1\0x:80"s, "127.0.0.1:99999999999"s}) {
        try {
            parseEndpoint("--connect", text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), exitUsage);
            EXPECT_NE(failure.whatNext().find("log_application ps"), std::string::npos);
        }
    }
    EXPECT_THROW(parseEndpoint("--host", "127.0.0.1:", 30451), Failure);
}

TEST(Endpoint, KnowsTheLoopbackAddresses) {
    EXPECT_TRUE((Endpoint{"127.0.0.1", 1}).isLoopback());
    EXPECT_TRUE((Endpoint{"127.9.8.7", 1}).isLoopback());
    EXPECT_FALSE((Endpoint{"128.0.0.1", 1}).isLoopback());
    EXPECT_FALSE((Endpoint{"10.127.0.1", 1}).isLoopback());
}

}  // namespace
