#include "vek/net/address.h"

#include <cstring>
#include <iomanip>
#include <sstream>
#include <type_traits>
#include <typeinfo>

#include <gtest/gtest.h>

#include "vek/exception.h"
#include "vek/net/address_text.h"
#include "vek/net/ip4_address.h"

namespace {

using namespace vek::net;

std::string printed(const IPAddressBase& address) {
    std::ostringstream stream;
    stream << address;
    return stream.str();
}

template <class F>
void expectInvalidArgument(F f) {
    try {
        f();
        ADD_FAILURE() << "nothing thrown";
    } catch (const vek::NetError& error) {
        EXPECT_EQ(typeid(error), typeid(vek::NetError));
        EXPECT_EQ(error.code(), 22u);
    }
}

TEST(EmptyAddress, IsNullAndHasNoBytes) {
    EXPECT_EQ(emptyAddress.sockaddr, nullptr);
    EXPECT_EQ(emptyAddress.length, 0);
    EmptyAddress other;
    other.prepare();
    EXPECT_EQ(other.sockaddr, nullptr);
    EXPECT_EQ(other.length, 0);
}

// Evaluated before main.
const void* const addressAheadOfMain = &emptyAddress;

TEST(EmptyAddress, IsOneInTheProcess) {
    EXPECT_EQ(addressAheadOfMain, &emptyAddress);
}

TEST(IP4Address, IsTheWildcardWithoutAPortAtFirst) {
    const IP4Address address;
    const unsigned char expected[16] = {2};
    ASSERT_EQ(address.length, 16);
    EXPECT_EQ(std::memcmp(address.sockaddr, expected, 16), 0);
    EXPECT_EQ(address.port(), 0);
    EXPECT_EQ(printed(address), "0.0.0.0");
}

TEST(IP4Address, HoldsTheSystemsFormInNetworkOrder) {
    IP4Address address;
    address.setAddress(0x7F000001);
    address.setPort(30451);
    const unsigned char expected[16] = {2, 0, 0x76, 0xF3, 127, 0, 0, 1};
    EXPECT_EQ(std::memcmp(address.sockaddr, expected, 16), 0);
    address.prepare();
    EXPECT_EQ(std::memcmp(address.sockaddr, expected, 16), 0);
    EXPECT_EQ(address.length, 16);
    EXPECT_EQ(printed(address), "127.0.0.1:30451");
}

TEST(IP4Address, KeepsItsPortInNetworkOrder) {
    IP4Address address;
    address.setPort(80);
    EXPECT_EQ(address.rawPort(), 0x5000);
    EXPECT_EQ(address.port(), 80);
    address.setRawPort(0x0100);
    EXPECT_EQ(address.rawPort(), 0x0100);
    EXPECT_EQ(address.port(), 1);
}

TEST(IP4Address, TakesAnAddressInEitherOrder) {
    IP4Address address;
    address.setAddress(0x0A010203);
    EXPECT_EQ(address.toString(), "10.1.2.3");
    address.setRawAddress(0x0A010203);
    EXPECT_EQ(address.toString(), "3.2.1.10");
}

TEST(IP4Address, KeepsItsPortWhenItReadsAnAddress) {
    IP4Address address;
    address.setPort(30451);
    address.fromString("10.1.2.3");
    EXPECT_EQ(address.toString(), "10.1.2.3");
    EXPECT_EQ(address.port(), 30451);
    EXPECT_EQ(printed(address), "10.1.2.3:30451");
}

TEST(IP4Address, PrintsNoPortIfItIsZero) {
    IP4Address address;
    address.fromString("255.255.255.255");
    EXPECT_EQ(printed(address), "255.255.255.255");
}

TEST(IP4Address, PrintsItsPortInDecimalWhateverTheStreamIsSetTo) {
    IP4Address address;
    address.setPort(49733);
    std::ostringstream stream;
    stream << std::hex << std::showbase << std::setw(16) << std::setfill('.') << address;
    EXPECT_EQ(stream.str(), "...0.0.0.0:49733");
}

TEST(IP4Address, CopyStandsOnItsOwnBytes) {
    IP4Address address;
    address.fromString("10.1.2.3");
    address.setPort(7);
    IP4Address copy(address);
    EXPECT_NE(copy.sockaddr, address.sockaddr);
    IP4Address assigned;
    void* const own = assigned.sockaddr;
    assigned = address;
    EXPECT_EQ(assigned.sockaddr, own);
    address.fromString("1.1.1.1");
    address.setPort(8);
    EXPECT_EQ(printed(copy), "10.1.2.3:7");
    EXPECT_EQ(printed(assigned), "10.1.2.3:7");
    EXPECT_EQ(std::memcmp(copy.sockaddr, assigned.sockaddr, 16), 0);
}

const char* const goodTexts[] = {"0.0.0.0", "127.0.0.1", "255.255.255.255", "10.1.2.3"};

class GoodAddressText : public testing::TestWithParam<const char*> {};

TEST_P(GoodAddressText, ComesBackUnchanged) {
    IP4Address address;
    address.fromString(GetParam());
    EXPECT_EQ(address.toString(), GetParam());
    EXPECT_TRUE(address.tryFromString(GetParam()));
    EXPECT_EQ(address.toString(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(, GoodAddressText, testing::ValuesIn(goodTexts));

const std::string badTexts[] = {
    "",
    "1",
    "1.2.3",
    "1.2.3.",
    "1.2.3.4.",
    ".1.2.3.4",
    "1.2.3.4.5",
    "1..2.3",
    "256.1.1.1",
    "1.2.3.256",
    "1.2.3.4294967300",
    "1.2.3.-4",
    "+1.2.3.4",
    "0x7f.0.0.1",
    "2130706433",
    " 1.2.3.4",
    "1.2.3.4 ",
    "1.2.3.4\n",
    "1.2.3.4/8",
    "127.0.0.1:80",
    "::1",
    "::ffff:1.2.3.4",
    "localhost",
    "a.b.c.d",
    "%s%s%n",
    std::string("10.1.2.3\0", 9),
    std::string("10.1.2.3\0.4", 11),
    std::string("\0", 1),
    "\xFF\xFE.1.1.1",
};

class BadAddressText : public testing::TestWithParam<std::string> {};

TEST_P(BadAddressText, IsRefusedAndChangesNothing) {
    IP4Address address;
    address.fromString("9.8.7.6");
    address.setPort(5);
    expectInvalidArgument([&] { address.fromString(GetParam()); });
    EXPECT_EQ(printed(address), "9.8.7.6:5");
    EXPECT_FALSE(address.tryFromString(GetParam()));
    EXPECT_EQ(printed(address), "9.8.7.6:5");
}

INSTANTIATE_TEST_SUITE_P(, BadAddressText, testing::ValuesIn(badTexts));

TEST(IP4Address, RefusesTextOfAnyLength) {
    IP4Address address;
    for (const char* const piece : {"1", ".", "1.", " ", "0"}) {
        std::string text;
        while (text.size() < 100000) {
            text += piece;
        }
        EXPECT_FALSE(address.tryFromString(text)) << piece;
    }
    EXPECT_EQ(printed(address), "0.0.0.0");
}

// An address whose `fromString` throws other errors than the real ones.
template <class Error>
class FailingAddress : public IPAddressBase {
  public:
    std::string toString() const override { return ""; }
    void fromString(const std::string&) override { throw Error(23); }
    std::uint16_t port() const override { return 0; }
};

TEST(IPAddressBase, PassesOtherErrorsOfReadingOn) {
    EXPECT_THROW(FailingAddress<vek::NetError>().tryFromString("1.2.3.4"), vek::NetError);
    EXPECT_THROW(FailingAddress<vek::OsError>().tryFromString("1.2.3.4"), vek::OsError);
}

TEST(AddressText, SystemsRefusalIsAnInvalidArgument) {
    const unsigned char raw[32] = {};
    constexpr AddressForm unknownFamily = {99, 4, 4, 22};
    expectInvalidArgument([&] { addressText(unknownFamily, raw); });
    constexpr AddressForm noRoom = {2, 4, 4, 3};
    expectInvalidArgument([&] { addressText(noRoom, raw); });
    unsigned char target[32] = {};
    expectInvalidArgument([&] { parseAddress(unknownFamily, "1.2.3.4", target); });
}

TEST(AddressText, KnowsTheLongerFormToo) {
    unsigned char raw[28] = {};
    parseAddress(ip6Form, "::1", raw);
    unsigned char expected[28] = {};
    expected[23] = 1;
    EXPECT_EQ(std::memcmp(raw, expected, sizeof raw), 0);
    EXPECT_EQ(addressText(ip6Form, raw), "::1");
    const std::string longest = "ffff:eeee:dddd:cccc:bbbb:aaaa:9999:8888";
    parseAddress(ip6Form, longest, raw);
    EXPECT_EQ(addressText(ip6Form, raw), longest);
    expectInvalidArgument([&] { parseAddress(ip6Form, "1.2.3.4", raw); });
    EXPECT_EQ(addressText(ip6Form, raw), longest);
}

}  // namespace
