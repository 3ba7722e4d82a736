// log_application::Client: one connection to a process's log service, and what can be asked there.
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

// What a process says about one of its sinks, as it says it. Empty where it says nothing.
struct SinkInfo {
    std::string id;
    std::string enabled;
    std::string maxLevel;
    std::string customFormat;
    std::string path;
    std::string peer;
};

// For one thread at a time. Every operation throws Failure: connection lost for a process that is
// silent, goes, or says what is no answer; not done where the process refuses.
class Client : public vek::NoCopy {
  public:
    // Connects to the first endpoint of `process` that answers. `stopSignal` ends every wait; it
    // may be null, and has to outlive this.
    Client(const Process& process, StopSignal* stopSignal);

    std::string defaultLevel();

    // Each logger with its level, or "default" where it follows the default level.
    std::map<std::string, std::string> loggers();

    void setDefaultLevel(vek::log::Level level);

    // In as many requests as it takes.
    void setLevels(const std::vector<LevelChange>& changes);

    std::vector<SinkInfo> sinks();

    void save();

    // Asks for the messages. Nothing else may be asked afterwards.
    void startMessages();

    // Waits, without bound, for the next telegram of the messages, and gives its text; null at the
    // end of the stream. It stays until the next call. Throws vek::Exception for a failure.
    const char* nextMessage(std::uint32_t& length) { return buffer.nextMessage(length); }

    // Whether the stream has ended inside a telegram.
    bool endedInside() const { return buffer.available() != 0; }

    // Whether somebody takes requests here. Whatever comes is an answer, the end of the stream too;
    // false if nothing comes in time. A port outlives its process in a child that has inherited it,
    // and takes connections, but nobody answers. Nothing else may be asked afterwards.
    bool isAnswering();

    // Where this is connected to.
    const Endpoint& endpoint() const { return connectedTo; }

  private:
    void connectToAny(const std::vector<Endpoint>& endpoints);
    // Sends `telegram` and lets `readAnswer` take the answer; makes a Failure of what they throw.
    void request(vek::log::Telegram& telegram, const std::function<void()>& readAnswer);
    void requestAck(vek::log::Telegram& telegram);
    vek::log::Telegram answerOf(vek::log::Telegram& telegram, const std::string& type);
    void receive(vek::log::Telegram& telegram, const std::string& type);
    Failure strange(const std::string& what) const;
    Failure silent(const vek::Exception& error) const;

    const std::string label;
    StopSignal* const stop;
    std::unique_ptr<ClientSocket> socket;
    Endpoint connectedTo;
    // Room for the largest telegram that a process can send, and for many small ones at a read.
    vek::net::TCPBuffer buffer{1024, 65536};
};

}  // namespace log_application
