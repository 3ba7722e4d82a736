// log_application::Client: a connection to a log service, and its requests.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/log_application/connection/client_socket.h"
#include "tools/log_application/connection/level_change.h"
#include "tools/log_application/connection/process.h"
#include "tools/log_application/program/failure.h"
#include "vek/log/telegram.h"
#include "vek/net/tcp_buffer.h"

namespace log_application {

// A sink as the process describes it. Fields that it doesn't send are empty.
struct SinkInfo {
    std::string id;
    std::string enabled;
    std::string maxLevel;
    std::string customFormat;
    std::string path;
    std::string peer;
};

// Not thread-safe. Every operation throws Failure: exitLost if the process doesn't answer, closes
// the connection or sends something that isn't an answer, exitNotDone if it refuses.
class Client : public vek::NoCopy {
  public:
    // Connects to the first endpoint of `process` that accepts. `stopSignal` interrupts all
    // blocking operations; it may be null, isn't owned and must outlive this. Each answer may take
    // `answerLimitMs` milliseconds.
    Client(const Process& process, StopSignal* stopSignal,
           std::int64_t answerLimitMs = ClientSocket::answerTimeMs);

    // Returns the name of the default level.
    std::string defaultLevel();

    // Returns each logger with the name of its level, or "default" if it follows the default level.
    std::map<std::string, std::string> loggers();

    void setDefaultLevel(vek::log::Level level);

    // Sends as many requests as are needed for the size limit of a request.
    void setLevels(const std::vector<LevelChange>& changes);

    std::vector<SinkInfo> sinks();

    // Makes the process write its levels into its logging.conf.
    void save();

    // Subscribes to the messages. No other request may follow.
    void startMessages();

    // Blocks, without limit, until the next telegram has arrived. Returns its text, which is valid
    // until the next call; null at the end of the stream. Throws vek::Exception.
    const char* nextMessage(std::uint32_t& length) { return buffer.nextMessage(length); }

    // True if the stream has ended inside a telegram.
    bool endedInside() const { return buffer.available() != 0; }

    // Sends a request and returns true if anything comes back in time, the end of the stream
    // included. A port that a child has inherited accepts connections after its process has ended,
    // but nothing answers. No other request may follow.
    bool isAnswering();

    // The peer.
    const Endpoint& endpoint() const { return connectedTo; }

  private:
    void connectToAny(const std::vector<Endpoint>& endpoints);
    // Sends `telegram` and calls `readAnswer`. Converts what they throw into a Failure.
    void request(vek::log::Telegram& telegram, const std::function<void()>& readAnswer);
    void requestAck(vek::log::Telegram& telegram);
    vek::log::Telegram answerOf(vek::log::Telegram& telegram, const std::string& type);
    void receive(vek::log::Telegram& telegram, const std::string& type);
    Failure strange(const std::string& what) const;
    Failure silent(const vek::Exception& error) const;

    const std::string label;
    StopSignal* const stop;
    const std::int64_t answerLimit;
    std::unique_ptr<ClientSocket> socket;
    Endpoint connectedTo;
    // Holds the largest telegram that a process can send, and many small ones per read.
    vek::net::TCPBuffer buffer{1024, 65536};
};

}  // namespace log_application
