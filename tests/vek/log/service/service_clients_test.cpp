// Clients of the log service that behave badly, and too many of them.
#include "tests/vek/log/service/log_service.h"

namespace {

using namespace vek;
using namespace vek::test;

const std::string request = "get-default-scope:";
const std::string reply = "default-scope:scope=WARN";
const char* const clientReport =
    "log-server: caught exception while processing a configuration client/message:\n\n";

// How long it is watched that nothing happens.
constexpr DWORD observeMs = 300;

class ServiceClients : public LogServiceTest {
  protected:
    void SetUp() override { start(); }

    bool hasNoReply(ServiceClient& client) {
        client.socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &observeMs, sizeof observeMs);
        bool timedOut = false;
        try {
            client.receive();
        } catch (const NetError& error) {
            timedOut = error.code() == WSAETIMEDOUT;
        }
        limitReceiving(client.socket);
        return timedOut;
    }

    // Takes `count` clients, each of which has been accepted and, if it can be, served.
    void connectClients(std::size_t count) {
        while (clients.size() < count) {
            clients.push_back(std::make_unique<ServiceClient>(port));
            if (clients.size() <= servedClients) {
                ASSERT_EQ(clients.back()->ask(request), reply) << clients.size();
            }
        }
        // Served, so that earlier ones have been accepted.
        EXPECT_NE(discovery->ask("discover-request:"), "");
    }

    // Begins to stop, and waits a while. True if it has ended. The stop comes while the service
    // waits for its clients: just behind an answer it would see the stop first.
    bool hasStopped() {
        Sleep(observeMs);
        stopping = std::make_unique<vek_test::ScopedThread>([this] {
            server->stop();
            stopped = true;
        });
        Sleep(observeMs);
        return stopped;
    }

    // How many the set of sockets has room for, and those that are served beside the wake-up.
    static constexpr std::size_t servedClients = 62;

    std::vector<std::unique_ptr<ServiceClient>> clients;
    std::atomic<bool> stopped = false;
    std::unique_ptr<vek_test::ScopedThread> stopping;
};

TEST_F(ServiceClients, SixtyOneAreServedAndTheServerStopsAtOnce) {
    connectClients(61);
    for (const auto& client : clients) {
        EXPECT_EQ(client->ask(request), reply);
    }
    EXPECT_TRUE(hasStopped());
    stopping->join();
}

TEST_F(ServiceClients, WithSixtyTwoAllAreServedAndStopWaitsForTheNextThatSpeaks) {
    connectClients(62);
    for (const auto& client : clients) {
        EXPECT_EQ(client->ask(request), reply);
    }
    EXPECT_FALSE(hasStopped());
    EXPECT_EQ(clients.front()->ask(request), reply);
    stopping->join();
    EXPECT_TRUE(stopped);
}

TEST_F(ServiceClients, StopWithSixtyTwoIsReleasedByADiscoveryToo) {
    connectClients(62);
    EXPECT_FALSE(hasStopped());
    EXPECT_NE(discovery->ask("discover-request:"), "");
    stopping->join();
    EXPECT_TRUE(stopped);
}

TEST_F(ServiceClients, StopWithSixtyTwoIsReleasedByAClientThatLeaves) {
    connectClients(62);
    EXPECT_FALSE(hasStopped());
    clients.pop_back();
    stopping->join();
    EXPECT_TRUE(stopped);
}

TEST_F(ServiceClients, SixtyThirdIsAcceptedAndServedOnceThereIsRoom) {
    connectClients(63);
    EXPECT_EQ(clients[0]->ask(request), reply);
    EXPECT_EQ(clients[61]->ask(request), reply);
    clients[62]->send(request);
    EXPECT_TRUE(hasNoReply(*clients[62]));
    clients.erase(clients.begin());
    EXPECT_EQ(clients.back()->receive(), reply);
    EXPECT_FALSE(hasStopped());
    EXPECT_EQ(clients.front()->ask(request), reply);
    stopping->join();
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServiceClients, SecondRequestOfOneWriteWaitsForMoreToCome) {
    ServiceClient client(port);
    client.socket.writeAll(frame(request) + frame("agent-list:"));
    EXPECT_EQ(client.receive(), reply);
    EXPECT_TRUE(hasNoReply(client));
    // More has both served.
    client.send("foo:");
    EXPECT_EQ(client.receive(), "agent-list:");
    EXPECT_EQ(client.receive(), "unsupported:");
    EXPECT_TRUE(hasNoReply(client));
}

TEST_F(ServiceClients, RequestInSinglePiecesIsServedOnceItIsWhole) {
    ServiceClient client(port);
    const std::string bytes = frame(request);
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        client.socket.writeAll(bytes.substr(i, 1));
        Sleep(2);
    }
    EXPECT_TRUE(hasNoReply(client));
    client.socket.writeAll(bytes.substr(bytes.size() - 1));
    EXPECT_EQ(client.receive(), reply);
}

TEST_F(ServiceClients, HalfAFrameHoldsUpAllOthersUntilTheRestArrives) {
    ServiceClient half(port);
    ServiceClient other(port);
    EXPECT_EQ(other.ask(request), reply);
    const std::string bytes = frame(request);
    half.socket.writeAll(bytes.substr(0, 10));
    Sleep(100);
    other.send(request);
    EXPECT_TRUE(hasNoReply(other));
    discovery->send("discover-request:id=1");
    EXPECT_FALSE(hasStopped());
    half.socket.writeAll(bytes.substr(10));
    EXPECT_EQ(half.receive(), reply);
    stopping->join();
}

TEST_F(ServiceClients, HalfAFrameIsForgottenWhenItsClientLeaves) {
    for (std::size_t length : {1u, 4u, 10u}) {
        {
            ServiceClient half(port);
            half.socket.writeAll(frame(request).substr(0, length));
        }
        EXPECT_EQ(ServiceClient(port).ask(request), reply);
    }
    // The end of the stream is an end like any other.
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServiceClients, LargestFrameIsServedAndOneByteMoreClosesTheClient) {
    ServiceClient client(port);
    EXPECT_EQ(client.ask(request + std::string(1020 - request.size(), 'x')), reply);
    client.send(request + std::string(1021 - request.size(), 'x'));
    EXPECT_TRUE(client.isClosedByServer());
    EXPECT_EQ(errors.text(),
              clientReport + std::string("TCPBuffer received a message that is longer than can "
                                         "ever be received: buffer size = 1024, encountered size "
                                         "= 1021\n\n"));
    EXPECT_EQ(ServiceClient(port).ask(request), reply);
}

TEST_F(ServiceClients, LengthOfAllOnesClosesTheClient) {
    ServiceClient client(port);
    client.socket.writeAll("\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(client.isClosedByServer());
    EXPECT_TRUE(errors.waitFor("encountered size = 4294967295\n\n"));
}

TEST_F(ServiceClients, EmptyFrameHasNoReplyAndHoldsUpAllOthersUntilMoreArrives) {
    ServiceClient client(port);
    ServiceClient other(port);
    EXPECT_EQ(other.ask(request), reply);
    client.send("");
    Sleep(100);
    other.send(request);
    EXPECT_TRUE(hasNoReply(other));
    client.send(request);
    EXPECT_EQ(client.receive(), reply);
    EXPECT_EQ(other.receive(), reply);
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServiceClients, ClientThatOnlyConnectsAndLeavesDoesNoHarm) {
    for (int i = 0; i < 100; ++i) {
        ServiceClient client(port);
    }
    EXPECT_EQ(ServiceClient(port).ask(request), reply);
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServiceClients, ClientThatLeavesWithoutItsReplyDoesNoHarm) {
    for (int i = 0; i < 20; ++i) {
        ServiceClient client(port);
        client.send(request);
    }
    EXPECT_EQ(ServiceClient(port).ask(request), reply);
}

TEST_F(ServiceClients, ClientThatVanishesDuringItsReplyIsReportedAndTheOthersServed) {
    ServiceClient stays(port);
    vek_test::Door door;
    std::vector<std::unique_ptr<vek_test::LogCapture>> sinks;
    for (int i = 0; i < 200; ++i) {
        sinks.push_back(std::make_unique<vek_test::LogCapture>(
            manager, log::INVALID, [&](const log::Message&) { door.pass(); }));
    }
    // The reply, of 201 telegrams, waits for the message being written.
    manager.getLogger("x")->emit(log::WARN, "held");
    ASSERT_TRUE(door.isReached());
    { ServiceClient(port).send("evidence-info:"); }
    Sleep(100);
    door.open();
    EXPECT_TRUE(errors.waitFor(clientReport));
    EXPECT_EQ(stays.ask(request), reply);
    const std::string report = errors.text();
    EXPECT_TRUE(report.ends_with("(10054)\n\n") || report.ends_with("(10053)\n\n")) << report;
}

TEST_F(ServiceClients, ClientThatShutsItsSendingSideDownIsClosed) {
    ServiceClient client(port);
    EXPECT_EQ(client.ask(request), reply);
    client.socket.shutdown(true, false);
    EXPECT_TRUE(client.isClosedByServer());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(ServiceClients, ClientThatDoesNotReadItsRepliesIsServedAsLongAsTheyHaveRoom) {
    ServiceClient mute(port);
    for (u_long i = 1; i <= 200; ++i) {
        mute.send(request);
        // A second request that comes with the first would stay unserved.
        ASSERT_TRUE(eventually([&] {
            u_long waiting = 0;
            ioctlsocket(mute.socket.nativeHandle(), FIONREAD, &waiting);
            return waiting == i * frame(reply).size();
        }));
    }
    EXPECT_EQ(ServiceClient(port).ask(request), reply);
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(mute.receive(), reply);
    }
}

TEST_F(ServiceClients, FrequentComingAndGoingLeavesEveryoneServed) {
    for (int round = 0; round < 10; ++round) {
        for (int i = 0; i < 10; ++i) {
            clients.push_back(std::make_unique<ServiceClient>(port));
        }
        for (std::size_t i = 0; i < clients.size(); i += 2) {
            ASSERT_EQ(clients[i]->ask(request), reply);
        }
        clients.erase(clients.begin(), clients.begin() + 7);
    }
    for (const auto& client : clients) {
        EXPECT_EQ(client->ask(request), reply);
    }
    EXPECT_EQ(errors.text(), "");
}

}  // namespace
