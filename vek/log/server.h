// vek::log::Server: the log service of a process, for an outside log tool, the "log_application".
//
// By UDP it answers discovery requests with the process's name, id and TCP port. By TCP a client
// can read and change levels, list loggers and sinks, save the configuration, and turn its
// connection into a stream of log messages. docs/log-service.md describes the protocol.
//
// One thread, "log-server", serves all clients, and its reads and writes block, deliberately: a
// client that sends part of a frame blocks all others, and discovery, until the rest arrives or the
// connection ends. The service stores no messages: a client receives those that are dispatched
// after its request.
//
// Errors of the service go to std::cerr: the log may not be running.
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

// Not thread-safe: one thread, the owner, constructs, configures, starts, stops and destroys it.
class Server : public thread::Runnable, public NoCopy {
  public:
    // The UDP port of discovery.
    static constexpr std::uint16_t discoveryPort = 30451;

    // Opens the sockets, but binds none that others can reach. `owner` provides the levels and the
    // configuration; it isn't owned and must outlive this object. Throws NetError.
    explicit Server(ServedSettings* owner);

    // The body of the thread "log-server". Not to be called from elsewhere. Throws what binding the
    // sockets and waiting on them throws; the thread's death is reported then, and the process goes
    // on without a log service.
    void run() override;

    // Closes the remaining clients' connections, in order of acceptance. If the thread was started,
    // it must have been stopped.
    ~Server() override;

    // Set the addresses of the two ports: a numeric IPv4 address without a port, or empty for the
    // default, 127.0.0.1. A text that is no address is reported on std::cerr when the server
    // starts, and counts as empty. Call them before `start`.
    void setListenAddress(const std::string& text) { listen_addr = text; }
    void setDiscoveryAddress(const std::string& text) { discovery_addr = text; }

    // Starts the thread, unless it was started before, even if it has been stopped. Throws
    // std::system_error if the system gives no thread.
    void start();

    // Blocks, without a time-out, until a client has asked for messages; returns at once if one has
    // before. Blocks for good if the thread has died. Throws RuntimeError, "Server was not
    // initialized", if it was never started.
    void waitForClient();

    // Ends the thread and waits for it. Blocks as long as a client has sent only part of a frame;
    // with more than 61 clients, until one of them sends something or leaves, or a discovery
    // request arrives. Clients stay connected until the destructor. Does nothing if the thread
    // isn't active.
    void stop();

    // Sets `address` to the address `text` and returns true. Returns false for an empty text, and
    // for one that is no address, which it reports on std::cerr after `failureText`; `address` is
    // unchanged then.
    static bool trySetCustomIP(net::IP4Address& address, const std::string& text,
                               const std::string& failureText);

  private:
    // A client that may send requests. Both are null once they have been passed to a sink.
    struct Client {
        std::unique_ptr<net::TCPSocket> socket;
        // Uses `socket`, so it is destroyed first.
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

    // True once a client has asked for messages.
    bool clientConnected VEK_GUARDED_BY(clientSignal) = false;
    thread::Condition clientSignal;
    net::UDPSocket discoverySocket{false};
    net::WakeupChannel wakeup;
    thread::Thread thread;
    net::TCPListener listener{false};
    // In order of acceptance. Used only by the thread once it runs, like what follows.
    std::list<Client> clients;
    // The sockets that the thread waits for, rebuilt whenever `clients` changes. It has room for 64
    // sockets; others are dropped, deliberately: 61 clients fill it, with a 62nd `wakeup` isn't in
    // it, and a 63rd client isn't served.
    net::SocketSet socketSet;
    // The listener's address, with the port that the system chose.
    net::IP4Address boundAddress;
    std::string listen_addr;
    std::string discovery_addr;
    Manager& manager;
    ServedSettings& configurator;
    const std::uint32_t pid;
    ClientRequests requests;
};

}  // namespace vek::log
