#include "vek/log/server.h"

#include <iostream>
#include <optional>
#include <sstream>
#include <utility>

#include "vek/base/compiler.h"
#include "vek/exception.h"
#include "vek/log/manager.h"
#include "vek/log/service/discovery.h"
#include "vek/log/service/net_sink.h"
#include "vek/log/service/served_settings.h"
#include "vek/log/telegram.h"
#include "vek/thread/scope_guard.h"

namespace vek::log {

namespace {

const char* const threadName = "log-server";

constexpr std::uint32_t loopback = 0x7F000001;
constexpr int backlog = 8;
// The largest datagram in bytes; larger ones are dropped.
constexpr std::size_t datagramSize = 1024;

// The sizes of a client's TCPBuffer in bytes.
constexpr std::uint32_t sendSize = 16384;
constexpr std::uint32_t receiveSize = 1024;

// Detects a client whose host is gone after some seconds, but not a live and silent one.
constexpr net::KeepAliveTimes keepAlive = {
    .idleSeconds = 5,
    .intervalSeconds = 1,
    .probes = 5,
};

net::IP4Address loopbackAddress(std::uint16_t port) {
    net::IP4Address address;
    address.setPort(port);
    address.setAddress(loopback);
    return address;
}

// In one write, so that it doesn't mix with output of other threads.
void report(const char* what, const Exception& error) {
    std::ostringstream text;
    text << threadName << ": " << what << "\n\n" << error.printableText() << "\n";
    std::cerr << text.str() << std::flush;
}

void reportClient(const Exception& error) {
    report("caught exception while processing a configuration client/message:", error);
}

}  // namespace

Server::Server(ServedSettings* owner)
    : thread(threadName, *this),
      manager(Manager::instance()),
      configurator(*owner),
      // It doesn't change on this system.
      pid(manager.withSinks([](const auto&, std::uint32_t id) { return id; })),
      requests(manager, configurator) {}

Server::~Server() {
    while (!clients.empty()) {
        clients.pop_front();
    }
}

bool Server::wasStarted() const {
    return thread.getId() != 0 || thread.getState() == thread::Thread::ENDED;
}

void Server::start() {
    if (!wasStarted()) {
        thread.start();
    }
}

void Server::waitForClient() {
    if (!wasStarted()) {
        throw RuntimeError("Server was not initialized");
    }
    thread::ScopeGuard guard(clientSignal);
    while (!clientConnected) {
        thread::sleepUnder(guard, clientSignal, [this] { clientSignal.wait(); });
    }
}

void Server::stop() {
    if (thread.getId() == 0) {
        return;
    }
    thread.terminate();
    wakeup.notify();
    thread.join();
}

bool Server::trySetCustomIP(net::IP4Address& address, const std::string& text,
                            const std::string& failureText) {
    if (text.empty()) {
        return false;
    }
    try {
        address.fromString(text);
        return true;
    } catch (const Exception& error) {
        std::ostringstream report;
        report << VEK_FUNCTION_SIGNATURE << ": " << failureText << "\n\n"
               << error.printableText() << "\n";
        std::cerr << report.str() << std::flush;
        return false;
    }
}

void Server::run() {
    bindSockets();
    while (thread.getState() == thread::Thread::RUNNING) {
        serveReadySocket();
    }
    discoverySocket.close();
    listener.close();
}

void Server::bindSockets() {
    net::IP4Address address = loopbackAddress(0);
    trySetCustomIP(address, listen_addr,
                   "Failed to set custom listen_addr. Falling back to using localhost.");
    listener.bind(address);
    listener.listen(backlog);
    listener.localAddress(boundAddress);

    address = loopbackAddress(discoveryPort);
    trySetCustomIP(address, discovery_addr,
                   "Failed to set custom discovery_addr. Falling back to using localhost.");
    discoverySocket.setBroadcast(true);
    // All processes of a host share this port.
    discoverySocket.setReuseAddress();
    discoverySocket.bind(address);
    // An asker that is gone must not make the next receive fail.
    discoverySocket.ignoreLostReceivers();
    rebuildSocketSet();
}

void Server::rebuildSocketSet() {
    socketSet.clear();
    socketSet.add(discoverySocket.nativeHandle());
    socketSet.add(listener.nativeHandle());
    for (const Client& client : clients) {
        socketSet.add(client.socket->nativeHandle());
    }
    wakeup.addTo(socketSet);
}

// Waits, and serves one kind of ready socket. The next pass finds the others still ready.
void Server::serveReadySocket() {
    net::SocketSet ready = socketSet;
    net::Socket::select(&ready, nullptr, nullptr);
    if (wakeup.consume(ready)) {
        return;
    }
    if (ready.isSet(discoverySocket.nativeHandle())) {
        try {
            discoveryStep();
        } catch (const Exception& error) {
            report("caught exception while processing a discovery message:", error);
        }
    } else if (ready.isSet(listener.nativeHandle())) {
        acceptClient();
    } else {
        walkClients(ready);
    }
}

void Server::discoveryStep() {
    std::string datagram(datagramSize, '\0');
    net::IP4Address sender;
    datagram.resize(discoverySocket.receiveFrom(datagram.data(), datagramSize, sender));
    const std::optional<std::string> reply =
        answerDiscovery(datagram, {pid, configurator.getInstanceName(), boundAddress.port()});
    if (reply.has_value()) {
        discoverySocket.sendTo(reply->data(), static_cast<std::uint32_t>(reply->size()), sender);
    }
}

void Server::acceptClient() {
    try {
        Client client;
        client.socket = std::make_unique<net::TCPSocket>(listener.accept());
        client.buffer =
            std::make_unique<net::TCPBuffer>(sendSize, receiveSize, client.socket.get());
        client.socket->setNoDelay();
        client.socket->setKeepAlive(true);
        // Has no effect on this system.
        client.socket->setTimeoutOption(true, 10);
        client.socket->setKeepAliveTimes(keepAlive);
        clients.push_back(std::move(client));
        rebuildSocketSet();
    } catch (const Exception& error) {
        reportClient(error);
    }
}

void Server::walkClients(const net::SocketSet& ready) {
    bool hasChanged = false;
    for (auto client = clients.begin(); client != clients.end();) {
        bool leaves = false;
        if (ready.isSet(client->socket->nativeHandle())) {
            try {
                leaves = handleClient(*client);
            } catch (const Exception& error) {
                reportClient(error);
                leaves = true;
            }
        }
        client = leaves ? clients.erase(client) : std::next(client);
        hasChanged = hasChanged || leaves;
    }
    if (hasChanged) {
        rebuildSocketSet();
    }
}

// Serves one request. Returns true if the client must be removed, and closed unless a sink has it.
bool Server::handleClient(Client& client) {
    Telegram request(client.buffer.get());
    if (!request.receive()) {
        return true;
    }
    if (request.type != "get-messages") {
        requests.serve(request);
        return false;
    }
    if (!request.params.empty()) {
        // Deliberately not the name on the wire.
        std::cerr << "Got unexpected arguments to 'get-evidence' message. Ignoring them.\n"
                  << std::flush;
    }
    streamMessages(client);
    return true;
}

void Server::streamMessages(Client& client) {
    SinkConfig config;
    config.print_pids = false;
    config.print_tids = false;
    config.print_time = false;
    net::TCPSocket& socket = *client.socket;
    auto sink =
        std::make_unique<NetSink>(config, std::move(client.socket), std::move(client.buffer));
    socket.shutdown(false, true);
    if (!manager.addSinkUnlessShutDown(sink.get())) {
        // No message will come any more. The sink closes the connection.
        return;
    }
    sink.release();
    const thread::ScopeGuard guard(clientSignal);
    clientConnected = true;
    clientSignal.wakeOne();
}

}  // namespace vek::log
