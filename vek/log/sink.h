// vek::log::Sink: a destination of log messages, and the settings that all sinks share.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "vek/log/level.h"
#include "vek/log/message.h"
#include "vek/log/sinks/message_format.h"

namespace vek::log {

// Copied by value into each sink.
struct SinkConfig {
    // Turns the sink on.
    bool enabled = false;
    // What the default layout shows. Ignored with a format.
    bool print_pids = true;
    bool print_tids = true;
    bool print_time = true;
    // The most verbose level that the sink takes. The initial value takes all.
    Level max_level = INVALID;
    // The compiled format; empty means the default layout.
    std::vector<FormatToken> format;
};

// The values of Sink::type, which clients of the log service see too.
enum SinkType : int { sinkStdout = 0, sinkFile = 1, sinkNet = 2, sinkDebugger = 3 };

// Construct it on any thread. The manager owns a sink once it has been added, and deletes it.
// `store` and `id` are called on the manager's worker thread, with the manager's mutex held: one
// sink and one message at a time. `store` must not log and must not call the manager.
class Sink {
  public:
    // A SinkType.
    virtual int type() const = 0;

    virtual ~Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    // Takes a message, which is valid during this call only. If it throws a vek::Exception, the
    // manager removes and deletes this sink; any other exception ends the manager's worker. A sink
    // that doesn't treat attributes itself overrides the second only, with `using Sink::store`.
    virtual void store(const AttrMessage& message) { store(static_cast<const Message&>(message)); }
    virtual void store(const Message& message) = 0;

    // The sink's name: "stdout", "debugger", "file#" or "net#" with a number.
    virtual std::string id() const = 0;

    // The sink's own copy of its settings, valid while the sink lives.
    const SinkConfig& getConfig() const { return *config; }

    // Whether the manager offers this sink messages of `level`.
    bool accepts(Level level) const { return level <= config->max_level; }

  protected:
    // `ownConfig` is a member of the derived object and need not be constructed yet. Not null.
    explicit Sink(const SinkConfig* ownConfig) : config(ownConfig) {}
    explicit Sink(const SinkConfig& ownConfig) : Sink(&ownConfig) {}

    // Writes `message` to `stream`, without a line end, in the format of the settings, or in the
    // default layout if that is empty. For sinks that write text. Throws what
    // Message::printFormatted throws.
    void render(std::ostream& stream, const Message& message, bool useColor) const;

  private:
    const SinkConfig* const config;
};

}  // namespace vek::log
