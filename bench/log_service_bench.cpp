// log_service_bench: the log service, compared with bare sockets: messages streamed to one client
// with a loop of one send per frame of the same size, the round trip of a request with a bare echo.
// Also the processor time of a service without clients.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "vek/log/configurator.h"
#include "vek/log/logger.h"
#include "vek/log/manager.h"
#include "vek/log/message.h"
#include "vek/log/server.h"
#include "vek/log/service/net_sink.h"
#include "vek/net/ip4_address.h"
#include "vek/net/tcp_buffer.h"
#include "vek/net/tcp_listener.h"
#include "vek/net/tcp_socket.h"
#include "vek/net/udp_socket.h"
#include "vek/pal.h"
#include "vek/thread/thread.h"

namespace {

using namespace vek;

constexpr int rounds = 7;
constexpr int findLimitMs = 10000;

int messagesPerRound() {
    return vek_bench::repetitions(20000, 200);
}

int tripsPerRound() {
    return vek_bench::repetitions(500, 20);
}

// An address of this host at which no other process answers.
const char* const ownAddress = "127.94.31.7";

const std::string request("\0\0\0\x12get-default-scope:", 22);
constexpr std::size_t replySize = 28;

class Client : public net::IPSocketT<net::DataSocket> {
  public:
    explicit Client(const net::IP4Address& address) : IPSocketT(false, net::streamType, 0) {
        connect(address);
        const BOOL noDelay = TRUE;
        setOption(IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    }

    // Reads `size` bytes and discards them.
    void drain(std::uint64_t size) {
        static char bytes[65536];
        while (size > 0) {
            size -= read(bytes,
                         static_cast<std::uint32_t>(std::min<std::uint64_t>(size, sizeof bytes)));
        }
    }

    void trip() {
        write(request.data(), static_cast<std::uint32_t>(request.size()));
        drain(replySize);
    }

    // Reads the next frame. Returns its size.
    std::uint32_t frameSize() {
        unsigned char prefix[4] = {};
        for (std::uint32_t have = 0; have < sizeof prefix;) {
            have += read(prefix + have, sizeof prefix - have);
        }
        const std::uint32_t length = static_cast<std::uint32_t>(prefix[2]) << 8 | prefix[3];
        drain(length);
        return length + 4;
    }
};

net::IP4Address address(const char* text, std::uint16_t port) {
    net::IP4Address result;
    result.fromString(text);
    result.setPort(port);
    return result;
}

// Returns the address where the service of this process listens. Throws if it doesn't answer within
// 10 seconds.
net::IP4Address findService() {
    const net::IP4Address target = address(ownAddress, log::Server::discoveryPort);
    const std::string text = "discover-request:";
    net::UDPSocket socket(false);
    const DWORD limitMs = 100;
    socket.setOption(SOL_SOCKET, SO_RCVTIMEO, &limitMs, sizeof limitMs);
    for (int waited = 0; waited < findLimitMs; waited += static_cast<int>(limitMs)) {
        socket.sendTo(text.data(), static_cast<std::uint32_t>(text.size()), target);
        char reply[1024];
        net::IP4Address sender;
        try {
            const std::string hello(reply, socket.receiveFrom(reply, sizeof reply, sender));
            return address("127.0.0.1", static_cast<std::uint16_t>(
                                            std::stoul(hello.substr(hello.rfind('=') + 1))));
        } catch (const NetError&) {
            // It hasn't started yet.
        }
    }
    throw std::runtime_error("the log service doesn't answer: another process may use its port");
}

// A pair of connected bare sockets.
struct BareConnection {
    BareConnection() {
        net::TCPListener listener(false);
        net::IP4Address bound = address("127.0.0.1", 0);
        listener.bind(bound);
        listener.listen(1);
        listener.localAddress(bound);
        client = std::make_unique<Client>(bound);
        server = std::make_unique<net::TCPSocket>(listener.accept());
        server->setNoDelay();
    }
    std::unique_ptr<Client> client;
    std::unique_ptr<net::TCPSocket> server;
};

void measureStreaming(const net::IP4Address& service, std::size_t textSize) {
    log::Manager& manager = log::Manager::instance();
    log::Logger& logger = *manager.getLogger("bench");
    Client client(service);
    const std::string getMessages("\0\0\0\x0Dget-messages:", 17);
    client.write(getMessages.data(), static_cast<std::uint32_t>(getMessages.size()));
    const auto sinkCount = [](const auto& sinks, std::uint32_t) { return sinks.size(); };
    while (manager.withSinks(sinkCount) == 0) {
        Sleep(1);
    }
    const std::string text(textSize, 'x');
    // The telegram holds the thread's id, and all frames must have one size.
    logger.emit(log::WARN, text);
    const std::uint32_t size = client.frameSize();

    BareConnection bare;
    const std::string frame(size, 'x');
    const auto bytesPerRound = [size] {
        return std::uint64_t{size} * static_cast<unsigned>(messagesPerRound());
    };
    const auto stream = [&] {
        std::thread reader([&] { client.drain(bytesPerRound()); });
        for (int i = 0; i < messagesPerRound(); ++i) {
            logger.emit(log::WARN, text);
        }
        reader.join();
    };
    const auto sendLoop = [&] {
        std::thread reader([&] { bare.client->drain(bytesPerRound()); });
        for (int i = 0; i < messagesPerRound(); ++i) {
            bare.server->write(frame.data(), size);
        }
        reader.join();
    };
    BareConnection direct;
    auto buffer = std::make_unique<net::TCPBuffer>(16384, 1024, direct.server.get());
    log::NetSink sink(log::SinkConfig(), std::move(direct.server), std::move(buffer));
    const log::Message message("bench", text, log::WARN, GetCurrentProcessId());
    const auto storeLoop = [&] {
        std::thread reader([&] { direct.client->drain(bytesPerRound()); });
        for (int i = 0; i < messagesPerRound(); ++i) {
            sink.store(message);
        }
        reader.join();
    };
    const std::string stored = "the sink alone, frame of " + std::to_string(size) + " bytes";
    vek_bench::compare(stored, rounds, messagesPerRound(), storeLoop, sendLoop, 1 / 0.9);
    const std::string what = "message streamed, frame of " + std::to_string(size) + " bytes";
    vek_bench::compare(what, rounds, messagesPerRound(), stream, sendLoop, 1 / 0.9);
    client.close();
    while (manager.withSinks(sinkCount) != 0) {
        logger.emit(log::WARN, text);
        Sleep(1);
    }
}

// Answers each request of `bare` with as many bytes as the service does, until the client closes.
// With `watched` above 0 it waits in a select for that many sockets, as a server of several clients
// must.
void echo(BareConnection& bare, std::size_t watched) {
    std::vector<std::unique_ptr<net::UDPSocket>> others;
    net::SocketSet all;
    for (std::size_t i = 1; i < watched; ++i) {
        others.push_back(std::make_unique<net::UDPSocket>(false));
        others.back()->bind(address("127.0.0.1", 0));
        all.add(others.back()->nativeHandle());
    }
    all.add(bare.server->nativeHandle());
    char bytes[1024];
    do {
        if (watched != 0) {
            net::SocketSet ready = all;
            net::Socket::select(&ready, nullptr, nullptr);
        }
        if (bare.server->read(bytes, sizeof bytes) == 0) {
            return;
        }
        bare.server->write(bytes, replySize);
    } while (true);
}

void measureRoundTrip(const net::IP4Address& service) {
    Client client(service);
    const auto trips = [](Client& with) {
        for (int i = 0; i < tripsPerRound(); ++i) {
            with.trip();
        }
    };
    const struct {
        const char* what;
        std::size_t watched;
        double target;
    } rows[] = {
        {"get-default-scope, compared with a blocking echo", 0, 0},
        {"get-default-scope, compared with a select for 1 socket and an echo", 1, 1.3},
        {"get-default-scope, compared with a select for 4 sockets and an echo", 4, 1.3},
    };
    for (const auto& row : rows) {
        BareConnection bare;
        std::thread echoing([&] { echo(bare, row.watched); });
        vek_bench::compare(
            row.what, rounds, tripsPerRound(), [&] { trips(client); }, [&] { trips(*bare.client); },
            row.target);
        bare.client->shutdown(true, true);
        echoing.join();
    }
}

std::uint64_t processorTime() {
    FILETIME made;
    FILETIME ended;
    FILETIME kernel;
    FILETIME user;
    GetProcessTimes(GetCurrentProcess(), &made, &ended, &kernel, &user);
    const auto value = [](const FILETIME& time) {
        return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    };
    return (value(kernel) + value(user)) / 10000;
}

void measureIdle() {
    const int idleMs = vek_bench::repetitions(5000, 200);
    const std::uint64_t before = processorTime();
    Sleep(static_cast<DWORD>(idleMs));
    vek_bench::reportValue(
        "processor time of the idle service in " + std::to_string(idleMs) + " ms",
        static_cast<double>(processorTime() - before), "ms");
    vek_bench::reportValue("threads of the idle service", thread::Thread::liveCount(), "threads");
}

void measureAll() {
    const VekPal pal(false, 0, 4, nullptr);
    log::Configurator configurator(nullptr);
    configurator.configure("log_service_bench");
    log::Server server(&configurator);
    measureIdle();
    server.setDiscoveryAddress(ownAddress);
    server.start();
    const net::IP4Address service = findService();
    measureRoundTrip(service);
    measureStreaming(service, 100);
    measureStreaming(service, 1000);
    server.stop();
}

}  // namespace

int main(int argc, char** argv) {
    return vek_bench::runBenchmark(argc, argv,
                                   "log_service_bench [--smoke] [--json]\n"
                                   "\n"
                                   "The log service, compared with bare sockets.\n",
                                   measureAll);
}
