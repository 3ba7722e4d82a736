#include "tools/log_application/forward/collector_address.h"

#include <gtest/gtest.h>

#include "tools/log_application/program/failure.h"

namespace {

using namespace log_application;

// What is said about `text`, message and advice; "" if it is good.
std::string refusal(const std::string& text) {
    try {
        parseCollectorAddress(text);
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), exitUsage);
        return failure.description() + " " + failure.whatNext();
    }
}

TEST(CollectorAddress, HasAHostAndAPort) {
    const CollectorAddress named = parseCollectorAddress("syslog+tcp://logs.example.com:601");
    EXPECT_EQ(named.host, "logs.example.com");
    EXPECT_EQ(named.port, 601);
    EXPECT_FALSE(named.isNumeric);
    EXPECT_EQ(named.text(), "logs.example.com:601");
    EXPECT_TRUE(parseCollectorAddress("syslog+tcp://10.1.2.3:514").isNumeric);
    const CollectorAddress ip6 = parseCollectorAddress("syslog+tcp://[fe80::1]:65535");
    EXPECT_EQ(ip6.host, "fe80::1");
    EXPECT_EQ(ip6.port, 65535);
    EXPECT_TRUE(ip6.isNumeric);
    EXPECT_EQ(ip6.text(), "[fe80::1]:65535");
}

TEST(CollectorAddress, MayBeWrittenInSeveralWays) {
    for (const char* const text :
         {"SysLog+TCP://host:1", "syslog+tcp://host:1/", "syslog+tcp://host.:1",
          "syslog+tcp://a_b-c.d:1", "syslog+tcp://1.example:1", "syslog+tcp://[::1]:1",
          "syslog+tcp://[1:2:3:4:5:6:7:8]:1", "syslog+tcp://[::ffff:10.0.0.1]:1",
          "syslog+tcp://[1::]:1", "syslog+tcp://[1:2:3:4:5:6:10.0.0.1]:1"}) {
        EXPECT_EQ(refusal(text), "");
    }
}

TEST(CollectorAddress, IsRefusedWithWhatToDo) {
    const auto says = [](const std::string& text, const std::string& part) {
        const std::string said = refusal(text);
        EXPECT_NE(said.find(part), std::string::npos) << text << ": " << said;
    };
    says("", "doesn't begin with syslog+tcp://. Write syslog+tcp://HOST:PORT");
    says("host:601", "doesn't begin with syslog+tcp://.");
    says("syslog+tcp:/host:601", "doesn't begin with syslog+tcp://.");
    says("syslog://host:601", "isn't syslog+tcp, the only kind of collector.");
    says("syslog+udp://host:601", "isn't syslog+tcp, the only kind of collector.");
    says("syslog+tcp://", "has no host and no port. Write syslog+tcp://HOST:PORT");
    says("syslog+tcp://host", "as syslog+tcp://host:601; collectors often use 601 or 514.");
    says("syslog+tcp://[::1]", "has no port.");
    says("syslog+tcp://host:", "has no valid port. Write a port from 1 to 65535.");
    says("syslog+tcp://host:0", "has no valid port.");
    says("syslog+tcp://host:65536", "has no valid port.");
    says("syslog+tcp://host:-1", "has no valid port.");
    says("syslog+tcp://host:601x", "has no valid port.");
    says("syslog+tcp://host: 601", "has no valid port.");
    says("syslog+tcp://:601", "has no host.");
    says("syslog+tcp://user@host:601", "has more than a host and a port.");
    says("syslog+tcp://host:601/path", "has more than a host and a port.");
    says("syslog+tcp://host:601//", "has more than a host and a port.");
    says("syslog+tcp://host:601?x", "has more than a host and a port.");
    says("syslog+tcp://host:601#x", "has more than a host and a port.");
    says("syslog+tcp://::1:514", "Put an IPv6 address into brackets");
    says("syslog+tcp://[]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://[1]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://[1::2::3]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://[:::]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://[12345::]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://[1:2:3:4:5:6:7::8:9]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://[10.0.0.1::]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://[fe80::1%1]:1", "has no IPv6 address in its brackets.");
    says("syslog+tcp://256.1.1.1:1", "has no valid host name.");
    says("syslog+tcp://1.2.3:1", "has no valid host name.");
    says("syslog+tcp://010.1.1.1:1", "has no valid host name.");
    says("syslog+tcp://ho st:1", "has no valid host name.");
    says("syslog+tcp://h\xC3\xBC:1", "has no valid host name.");
    says("syslog+tcp://a..b:1", "has no valid host name.");
    says("syslog+tcp://-a:1", "has no valid host name.");
    says("syslog+tcp://.:1", "has no valid host name.");
    says("syslog+tcp://" + std::string(64, 'a') + ":1", "has no valid host name.");
    for (const char* const address :
         {"0.0.0.0", "224.0.0.1", "255.255.255.255", "[::]", "[0:0:0:0:0:0:0:0]", "[ff02::1]"}) {
        says("syslog+tcp://" + std::string(address) + ":1", "to which no connection can be made.");
    }
}

TEST(CollectorAddress, ControlCharactersAreEscapedInTheAnswer) {
    EXPECT_EQ(refusal("\x1B[2J").find("\"\\x1B[2J\", given to --to,"), 0u);
    const std::string advice = refusal("syslog+tcp://\x1B[2J");
    EXPECT_EQ(advice.find('\x1B'), std::string::npos) << advice;
}

}  // namespace
