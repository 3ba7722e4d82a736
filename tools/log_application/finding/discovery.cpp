#include "tools/log_application/finding/discovery.h"

#include <string>

#include "tools/log_application/connection/socket_wait.h"
#include "tools/log_application/finding/broadcast_addresses.h"
#include "tools/log_application/finding/discovered.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/log/server.h"
#include "vek/log/telegram.h"
#include "vek/net/ip4_address.h"
#include "vek/net/own_address.h"
#include "vek/net/udp_socket.h"

namespace log_application {

namespace {

constexpr std::size_t largestDatagram = 65536;

std::vector<Endpoint> everywhere() {
    std::vector<Endpoint> places = {{"127.0.0.1", vek::log::Server::discoveryPort}};
    for (const std::string& address : broadcastAddresses()) {
        places.push_back({address, vek::log::Server::discoveryPort});
    }
    return places;
}

std::string requestText(std::uint32_t id, const std::vector<std::uint32_t>& pids) {
    vek::log::Telegram telegram;
    telegram.type = "discover-request";
    telegram.addParam("id", std::int64_t{id});
    for (const std::uint32_t pid : pids) {
        telegram.addParam("pid", std::int64_t{pid});
    }
    std::string text;
    telegram.serialize(text);
    return text;
}

// Sends the request to every place. Throws Failure if that fails for all of them. Calls sendto
// itself: that a host has no network is common, and no exception.
void ask(vek::net::UDPSocket& socket, const std::vector<Endpoint>& places,
         const std::string& text) {
    std::size_t sent = 0;
    const Endpoint* failed = nullptr;
    std::uint32_t failure = 0;
    for (const Endpoint& place : places) {
        vek::net::IP4Address address;
        address.fromString(place.address);
        address.setPort(place.port);
        if (sendto(socket.nativeHandle(), text.data(), static_cast<int>(text.size()), 0,
                   static_cast<const sockaddr*>(address.sockaddr),
                   address.length) == SOCKET_ERROR) {
            failure = static_cast<std::uint32_t>(WSAGetLastError());
            failed = &place;
        } else {
            ++sent;
        }
    }
    if (sent == 0 && failed != nullptr) {
        throw Failure(exitLost,
                      "The question for processes can't be sent: " + failed->text() + ": " +
                          vek::NetError(failure).what(),
                      "Check the network, or name a process by --connect HOST:PORT.");
    }
}

// Receives one answer.
void takeAnswer(vek::net::UDPSocket& socket, std::string& room, Discovered& found) {
    vek::net::IP4Address sender;
    try {
        const std::uint32_t size =
            socket.receiveFrom(room.data(), static_cast<std::uint32_t>(room.size()), sender);
        const std::string address = sender.toString();
        found.add(std::string_view(room.data(), size), address, vek::net::isOwnAddress(address));
    } catch (const vek::NetError&) {
        // Too large for an answer.
    }
}

}  // namespace

std::vector<Process> discover(const std::vector<Endpoint>& hosts, StopSignal& stop) {
    DiscoveryQuestion question;
    question.places = hosts.empty() ? everywhere() : hosts;
    return discoverWith(question, stop);
}

std::vector<Process> discoverWith(const DiscoveryQuestion& question, StopSignal& stop) {
    vek::net::UDPSocket socket(false);
    socket.setBroadcast(true);
    // Most of the places that are asked have no process.
    socket.ignoreLostReceivers();
    const std::uint32_t id = GetTickCount() ^ GetCurrentProcessId();
    const std::string text = requestText(id, question.pids);
    Discovered found(id);
    std::string room(largestDatagram, '\0');
    const vek::time::MonotonicClock start(true);
    int round = 0;
    for (;;) {
        const std::int64_t elapsed = vek::time::MonotonicClock(true) - start;
        if (elapsed >= question.timeMs || stop.isRequested()) {
            return found.processes();
        }
        if (round < question.rounds && elapsed >= round * discoveryRoundMs) {
            ask(socket, question.places, text);
            ++round;
        }
        const std::int64_t next =
            round < question.rounds ? round * discoveryRoundMs : question.timeMs;
        vek::net::SocketSet reading;
        reading.add(socket.nativeHandle());
        stop.addTo(reading);
        if (waitForReading(reading, next - elapsed) && reading.isSet(socket.nativeHandle())) {
            takeAnswer(socket, room, found);
        }
    }
}

}  // namespace log_application
