// Who is here, and on which port: datagrams to a running server.
#include "tests/vek/log/service/log_service.h"

namespace {

using namespace vek::test;

const std::string wrongPid = "pid=1";
// Of a network that is for documentation only.
const std::string foreignAddress = "ip=192.0.2.1";
const char* const discoveryReport =
    "log-server: caught exception while processing a discovery message:\n\n";

class Discovery : public LogServiceTest {
  protected:
    void SetUp() override { start(); }

    std::string ask(const std::string& params) {
        return discovery->ask("discover-request:" + params);
    }
    bool isRefused(const std::string& params) {
        return discovery->getsNoReply("discover-request:" + params);
    }

    const std::string ownPid = "pid=" + std::to_string(GetCurrentProcessId());
    std::string helloTail() const {
        return "name=demo\x1F" + ownPid + "\x1Ftcpport=" + std::to_string(port);
    }
    std::string hello() const { return "hello:" + helloTail(); }
};

TEST_F(Discovery, RequestWithoutParametersIsAnsweredWithoutAnId) {
    EXPECT_EQ(ask(""), hello());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, ReportedPortIsThatOfTheListener) {
    ServiceClient client(port);
    EXPECT_EQ(client.ask("get-default-scope:"), "default-scope:scope=WARN");
}

TEST_F(Discovery, IdComesBackAsTheNumberThatItBeginsWith) {
    const struct {
        const char* sent;
        const char* answered;
    } rows[] = {
        {"id=7", "id=7"},
        {"id=abc", "id=0"},
        {"id", "id=0"},
        {"id=12ab", "id=12"},
        {"id=%2042", "id=0"},
        {"id= 42", "id=42"},
        {"id=0042", "id=42"},
        {"id=+9", "id=9"},
        {"id=4294967295", "id=4294967295"},
        // What the extraction makes of a number that has no room.
        {"id=4294967296", "id=4294967295"},
        {"id=-1", "id=4294967295"},
        // The first counts, and none is left over.
        {"id=5\x1Fid=6", "id=5"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ask(row.sent), "hello:" + (std::string(row.answered) + "\x1F") + helloTail())
            << row.sent;
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, PidHasToMatch) {
    EXPECT_EQ(ask(ownPid), hello());
    // Read as far as it is a number.
    EXPECT_EQ(ask(ownPid + "x"), hello());
    for (const std::string& refused : {wrongPid, std::string("pid"), std::string("pid=x"),
                                       std::string("pid=-1"), std::string("pid=99999999999")}) {
        EXPECT_TRUE(isRefused(refused)) << refused;
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, NameHasToMatchByteForByte) {
    EXPECT_EQ(ask("name=demo"), hello());
    for (const std::string& refused : {std::string("name=Demo"), std::string("name=demo "),
                                       std::string("name=dem"), std::string("name")}) {
        EXPECT_TRUE(isRefused(refused)) << refused;
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, IpHasToBeAnAddressOfThisHost) {
    EXPECT_EQ(ask("ip=127.0.0.1"), hello());
    EXPECT_EQ(ask("ip=0.0.0.0"), hello());
    EXPECT_TRUE(isRefused(foreignAddress));
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, IpThatIsNoAddressIsReportedAndNotAnswered) {
    EXPECT_TRUE(isRefused("ip=1.2.3"));
    const std::string report = errors.text();
    EXPECT_EQ(report.rfind(discoveryReport, 0), 0u) << report;
    EXPECT_NE(report.find("(22)\n\n"), std::string::npos) << report;
    EXPECT_TRUE(isRefused("ip"));
    EXPECT_TRUE(isRefused("ip=localhost"));
    EXPECT_EQ(ask("ip=127.0.0.1"), hello());
}

TEST_F(Discovery, OneMatchOfARepeatedFilterIsEnough) {
    EXPECT_EQ(ask(wrongPid + "\x1F" + ownPid), hello());
    EXPECT_EQ(ask(ownPid + "\x1F" + wrongPid), hello());
    EXPECT_EQ(ask("name=other\x1Fname=demo\x1Fname"), hello());
    EXPECT_EQ(ask(foreignAddress + "\x1Fip=127.0.0.1"), hello());
    EXPECT_TRUE(isRefused(wrongPid + "\x1Fpid=2"));
    EXPECT_TRUE(isRefused("name=a\x1Fname=b"));
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, AllFiltersHaveToMatch) {
    const std::string passing[] = {ownPid, "name=demo", "ip=127.0.0.1"};
    const std::string failing[] = {wrongPid, "name=other", foreignAddress};
    for (int choice = 0; choice < 8; ++choice) {
        std::string params = "id=9";
        for (int i = 0; i < 3; ++i) {
            params += "\x1F" + ((choice >> i & 1) != 0 ? passing : failing)[i];
        }
        if (choice == 7) {
            EXPECT_EQ(ask(params), "hello:id=9\x1F" + helloTail());
        } else {
            EXPECT_TRUE(isRefused(params)) << params;
        }
    }
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, FiltersAreTriedInTheirOrderAndTheFirstFailureEndsThem) {
    // Neither the bad address nor the unknown parameter is reported.
    EXPECT_TRUE(isRefused(wrongPid + "\x1Fip=bad\x1F"
                                     "foo=1"));
    EXPECT_TRUE(isRefused("name=other\x1Fip=bad"));
    EXPECT_EQ(errors.text(), "");
    EXPECT_TRUE(isRefused(ownPid + "\x1Fip=bad"));
    EXPECT_NE(errors.text(), "");
}

TEST_F(Discovery, OtherParametersAreReportedAndIgnored) {
    EXPECT_EQ(ask("foo=1"), hello());
    EXPECT_EQ(errors.text(),
              "Got more parameters than expected for 'discover-request'.\nIgnoring them\n");
    // Once, however many there are, and beside those that are known.
    EXPECT_EQ(ask("a\x1F"
                  "b=2\x1Fid=3\x1F" +
                  ownPid +
                  "\x1F"
                  "Pid=1"),
              "hello:id=3\x1F" + helloTail());
    EXPECT_EQ(errors.text(),
              "Got more parameters than expected for 'discover-request'.\nIgnoring them\n"
              "Got more parameters than expected for 'discover-request'.\nIgnoring them\n");
}

TEST_F(Discovery, OtherTypesAreReportedAndNotAnswered) {
    for (const std::string& type : {std::string("hello"), std::string("Discover-request"),
                                    std::string(""), std::string("get-default-scope")}) {
        EXPECT_TRUE(discovery->getsNoReply(type + ":id=1"));
        EXPECT_TRUE(errors.waitFor("Unknown discovery message type received: '" + type + "'\n"));
    }
}

TEST_F(Discovery, DatagramWithoutAColonIsReportedAndTheNextIsServed) {
    EXPECT_TRUE(discovery->getsNoReply("discover-request"));
    EXPECT_EQ(errors.text(), discoveryReport + std::string("ParseError: Missing separator ':' in "
                                                           "\"discover-request\"\n\n"));
}

TEST_F(Discovery, EmptyDatagramIsReportedAndTheNextIsServed) {
    EXPECT_TRUE(discovery->getsNoReply(""));
    EXPECT_EQ(errors.text(),
              discoveryReport + std::string("ParseError: Missing separator ':' in \"\"\n\n"));
}

TEST_F(Discovery, DatagramOf1024BytesIsReadAndALargerOneIsLost) {
    const std::string start = "discover-request:id=5\x1Fname=demo\x1Fname=";
    const std::string fits = start + std::string(1024 - start.size(), 'x');
    EXPECT_EQ(discovery->ask(fits), "hello:id=5\x1F" + helloTail());
    EXPECT_EQ(errors.text(), "");
    EXPECT_TRUE(discovery->getsNoReply(fits + "x"));
    const std::string report = errors.text();
    EXPECT_NE(report.find(discoveryReport), std::string::npos) << report;
    EXPECT_TRUE(report.ends_with("(10040)\n\n")) << report;
}

TEST_F(Discovery, BinaryDatagramsDoNoHarm) {
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte) {
        allBytes += static_cast<char>(byte);
    }
    EXPECT_TRUE(discovery->getsNoReply(allBytes));
    EXPECT_TRUE(errors.waitFor("Unknown discovery message type received: '" +
                               allBytes.substr(0, ':') + "'\n"));
    EXPECT_TRUE(discovery->getsNoReply(std::string(1024, '\0')));
    EXPECT_TRUE(discovery->getsNoReply("discover-request:name=" + allBytes));
}

TEST_F(Discovery, RequestWithEverySeparatorDoubledIsTheSame) {
    EXPECT_EQ(ask("\x1F\x1F"
                  "id=1\x1F\x1F\x1Fname=demo\x1F"),
              "hello:id=1\x1F" + helloTail());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Discovery, EachOfSeveralClientsGetsItsOwnReply) {
    DiscoveryClient other(address);
    discovery->send("discover-request:id=1");
    other.send("discover-request:id=2");
    EXPECT_EQ(other.reply(), "hello:id=2\x1F" + helloTail());
    EXPECT_EQ(discovery->reply(), "hello:id=1\x1F" + helloTail());
}

TEST_F(Discovery, ClientThatDoesNotWaitForItsReplyDoesNotDisturb) {
    { DiscoveryClient(address).send("discover-request:"); }
    EXPECT_EQ(ask("id=1"), "hello:id=1\x1F" + helloTail());
}

}  // namespace
