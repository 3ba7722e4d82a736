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
    // Does the sink work at all.
    bool enabled = false;
    // What the default layout shows; a format shows what it names and nothing else.
    bool print_pids = true;
    bool print_tids = true;
    bool print_time = true;
    // The most verbose level that the sink takes; the initial value takes all.
    Level max_level = INVALID;
    // The compiled format; empty means the default layout.
    std::vector<FormatToken> format;
};

// The values of Sink::type, which clients of the log service see too.
enum SinkType : int { sinkStdout = 0, sinkFile = 1, sinkNet = 2, sinkDebugger = 3 };

// Made by any thread. The manager owns a sink once it has been added, and deletes it. `store` and
// `id` run on the manager's worker thread, under the manager's mutex: one sink and one message at a
// time. So `store` must make no logging statement and call nothing of the manager.
class Sink {
  public:
    // A SinkType.
    virtual int type() const = 0;

    virtual ~Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    // Takes a message, borrowed for this call. A vek::Exception has the manager remove and delete
    // this sink; any other exception ends the manager's worker. A sink without a use of its own for
    // attributes overrides the second only, and says `using Sink::store`.
    virtual void store(const AttrMessage& message) { store(static_cast<const Message&>(message)); }
    virtual void store(const Message& message) = 0;

    // The sink's name among sinks: "stdout", "debugger", "file#" or "net#" with a number.
    virtual std::string id() const = 0;

    // The sink's own copy of its settings, valid while the sink lives.
    const SinkConfig& getConfig() const { return *config; }

    // Whether the manager offers this sink messages of `level`.
    bool accepts(Level level) const { return level <= config->max_level; }

  protected:
    // `ownConfig` lives in the derived object, and need not be built yet. Never null.
    explicit Sink(const SinkConfig* ownConfig) : config(ownConfig) {}
    explicit Sink(const SinkConfig& ownConfig) : Sink(&ownConfig) {}

    // Writes `message` into `stream`, without a line end: by the format in the settings, or in the
    // default layout if that is empty. For all sinks that write text. Throws what the stream and
    // the colours throw; a stream that fails in silence isn't noticed.
    void render(std::ostream& stream, const Message& message, bool useColor) const;

  private:
    const SinkConfig* const config;
};

}  // namespace vek::log
