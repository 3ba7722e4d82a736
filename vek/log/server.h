// vek::log::Server: the door of a process for an outside log tool, the "log_application".
//
// By UDP it answers who is here, and on which port; by TCP it lets a client read and change levels,
// list loggers and sinks, save the configuration, and turn its connection into a stream of log
// messages. docs/log-service.md tells what goes over the wire.
//
// One thread, "log-server", does all of this, and its reads and writes block, deliberately: a
// client that sends half a frame and stays holds up all others, discovery included, until the rest
// arrives or the connection ends. It keeps no messages: a client sees what is dispatched from its
// request on.
//
// Its own troubles go to std::cerr and not into the log, which may not stand.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/log/service/client_requests.h"
#include "vek/net/ip4_address.h"
#include "vek/net/socket_set.h"
#include "vek/net/tcp_buffer.h"
#include "vek/net/tcp_listener.h"
#include "vek/net/tcp_socket.h"
#include "vek/net/udp_socket.h"
#include "vek/net/wakeup_channel.h"
#include "vek/thread/condition.h"
#include "vek/thread/runnable.h"
#include "vek/thread/thread.h"

namespace vek::log {

class Manager;
class ServedSettings;

// One thread, the owner, makes it, sets it up, starts, stops and destroys it.
class Server : public thread::Runnable, public NoCopy {
  public:
    // Where processes are looked for, by UDP.
    static constexpr std::uint16_t discoveryPort = 30451;

    // Opens the sockets, and binds none that others can reach. `owner` answers for levels and the
    // configuration; it isn't owned and has to outlive this. Throws NetError.
    explicit Server(ServedSettings* owner);

    // The serving itself, on the thread "log-server"; not to be called from elsewhere. Throws what
    // binding the sockets and waiting on them throws: the thread is reported dead then, and the
    // process goes on without a log service.
    void run() override;

    // Closes the connections of the clients that are left, front to back. The thread has to be
    // stopped, if it was started.
    ~Server() override;

    // Each a numeric IPv4 address without a port, or empty for the loopback address 127.0.0.1,
    // which is where the service stays unless this says otherwise. A text that is no address is
    // reported on std::cerr when the server starts, and counts as empty. To be called ahead of
    // `start`.
    void setListenAddress(const std::string& text) { listen_addr = text; }
    void setDiscoveryAddress(const std::string& text) { discovery_addr = text; }

    // Starts the thread, unless it was started before; one that was stopped stays stopped. Throws
    // std::system_error if the system gives no thread.
    void start();

    // Blocks, without bound, until a client has asked for messages; returns at once if one has.
    // Blocks for good if the thread has died. Throws RuntimeError, "Server was not initialized", if
    // it was never started.
    void waitForClient();

    // Has the thread end, and waits for that; it finishes what it is at, so that a client with half
    // a frame holds this up too, as do more than 61 clients, until one of them says something.
    // Clients stay connected until the destructor. Does nothing to a thread that isn't active.
    void stop();

    // Puts the address that `text` names into `address`, and gives true; not so for an empty text.
    // One that is no address is reported on std::cerr behind `failureText`: the result is false
    // then, and `address` stays as it was.
    static bool trySetCustomIP(net::IP4Address& address, const std::string& text,
                               const std::string& failureText);

  private:
    // A client that may send requests. Both are null once they have become a sink's.
    struct Client {
        std::unique_ptr<net::TCPSocket> socket;
        // Works on `socket`, and so goes first.
        std::unique_ptr<net::TCPBuffer> buffer;
    };

    bool wasStarted() const;
    void bindSockets();
    void rebuildSocketSet();
    void serveReadySocket();
    void discoveryStep();
    void acceptClient();
    void walkClients(const net::SocketSet& ready);
    bool handleClient(Client& client);
    void streamMessages(Client& client);

    // True once a client has asked for messages. Guarded by `clientSignal`.
    bool clientConnected = false;
    thread::Condition clientSignal;
    net::UDPSocket discoverySocket{false};
    net::WakeupChannel wakeup;
    thread::Thread thread;
    net::TCPListener listener{false};
    // In the order in which they came. This and what follows is for the thread alone once it runs.
    std::list<Client> clients;
    // What the thread waits for; built anew whenever `clients` changes. It has room for 64 sockets,
    // and the rest is dropped, deliberately: 61 clients fill it; with a 62nd `wakeup` isn't in it,
    // and a 63rd client isn't served.
    net::SocketSet socketSet;
    // Of the listener, with the port that the system chose.
    net::IP4Address boundAddress;
    std::string listen_addr;
    std::string discovery_addr;
    Manager& manager;
    ServedSettings& configurator;
    const std::uint32_t pid;
    ClientRequests requests;
};

}  // namespace vek::log
