// vek::log::Message: one log message on its way from a statement to the sinks, and the two layouts
// in which it can be printed.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "vek/log/level.h"
#include "vek/time/clock.h"

namespace vek::log {

struct FormatToken;

// Allocated on the heap by the thread of the statement, which owns it until it submits it. From
// then on it is immutable and belongs to the manager, which deletes it once the last sink has seen
// it. Sinks must not keep a reference to it after `store`.
class Message {
  public:
    // Stores the calling thread's id and the current time. `messagePid` is the logger's copy of the
    // process id. Throws nothing but std::bad_alloc.
    Message(std::string loggerName, std::string messageText, Level messageLevel,
            std::uint32_t messagePid);
    virtual ~Message() = default;
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    // Makes this the message of another statement, stamped with the calling thread and the current
    // time. Reuses the memory of the strings. For the owner, before it submits the message. Throws
    // nothing but std::bad_alloc.
    void reuse(const std::string& loggerName, std::string_view messageText, Level messageLevel,
               std::uint32_t messagePid);

    // Whether this is an AttrMessage, even one without attributes.
    virtual bool hasAttrs() const { return false; }

    // Writes this message to `stream` in a compiled format, without a line end, and returns the
    // stream. With `useColor` the colour keywords call applyColor and resetColor, which change the
    // console of `stream` at once if colours are on for it.
    //
    // Numbers are decimal whatever the stream's flags. The level's name is written in a field of 5
    // characters, with the stream's adjustment and fill. The stream's width is kept. Allocates
    // nothing but the text of a "{date}", once a second. Thread-safe on separate streams. Throws
    // OsError if colours are on and there is no console, and what the stream throws if exceptions
    // are enabled on it; other failures of the stream are ignored.
    std::ostream& printFormatted(std::ostream& stream, const std::vector<FormatToken>& tokens,
                                 bool useColor) const;

    // The same in the default layout, "[ WARN] logger: text". The first three flags add the process
    // id, the thread id and the local time, as strftime's "%c", before it. `useColor` colours the
    // part after these.
    std::ostream& printPlain(std::ostream& stream, bool printPids, bool printTids, bool printTime,
                             bool useColor) const;

    Level level;
    std::string category;
    // As the statement produced it, without an added line end.
    std::string text;
    std::uint32_t pid;
    std::uint32_t tid;
    // The time of construction.
    time::RealtimeClock timestamp;
};

// A message with attributes.
class AttrMessage : public Message {
  public:
    using Message::Message;

    bool hasAttrs() const override { return true; }

    // Fill it in before you submit the message.
    std::map<std::string, std::string> attrs;
};

}  // namespace vek::log
