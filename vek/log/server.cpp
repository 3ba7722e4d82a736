#include "vek/log/server.h"

#include <iostream>
#include <source_location>
#include <sstream>

#include "vek/exception.h"
#include "vek/log/manager.h"
#include "vek/thread/scope_guard.h"

namespace vek::log {

Server::Server(Configurator* owner)
    : thread("log-server", *this), manager(Manager::instance()), configurator(*owner) {}

Server::~Server() = default;

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
        report << std::source_location::current().function_name() << ": " << failureText << "\n\n"
               << error.printableText() << "\n";
        std::cerr << report.str();
        return false;
    }
}

void Server::run() {
    while (thread.getState() == thread::Thread::RUNNING) {
        net::SocketSet ready;
        wakeup.addTo(ready);
        net::Socket::select(&ready, nullptr, nullptr);
        wakeup.consume(ready);
    }
}

}  // namespace vek::log
