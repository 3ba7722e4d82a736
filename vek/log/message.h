// vek::log::Message: one log message on its way from a statement to the sinks, and its two ways of
// being rendered.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "vek/log/level.h"
#include "vek/time/clock.h"

namespace vek::log {

struct FormatToken;

// Made on the heap by the thread of the statement, which owns it until it is submitted; from then
// on the manager owns it, and deletes it once the last sink has seen it. Not to be changed any more
// once submitted. A sink borrows a message for one `store` and keeps no reference to it.
class Message {
  public:
    // Stamped with the calling thread's id and the time of now. `messagePid` is the process id, as
    // the logger knows it. Throws nothing but std::bad_alloc.
    Message(std::string loggerName, std::string messageText, Level messageLevel,
            std::uint32_t messagePid);
    virtual ~Message() = default;
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    // Whether this is an AttrMessage, with attributes set or not.
    virtual bool hasAttrs() const { return false; }

    // Renders this message by a compiled format into `stream`, without a line end, and gives the
    // stream back. With `useColor`, the keywords of colour take effect: they colour the console of
    // `stream` at once, by applyColor and resetColor, where colours are on for it.
    //
    // Numbers are decimal whatever the stream's flags say; the level's name stands in a field of 5
    // characters, with the stream's own adjustment and fill. The width that the stream has is left
    // alone. Allocates nothing but the text of a "{date}", once for each second. Safe from any
    // thread that has the stream to itself. Throws OsError if a colour has no console to act on,
    // and what the stream throws if it is set up to do that; a stream that fails in silence isn't
    // noticed.
    std::ostream& printFormatted(std::ostream& stream, const std::vector<FormatToken>& tokens,
                                 bool useColor) const;

    // Renders the default layout, as "[ WARN] logger: text", in the same way. The first three flags
    // put process id, thread id and local time, as strftime gives it for "%c", ahead of it; with
    // `useColor` the part behind these is coloured.
    std::ostream& printPlain(std::ostream& stream, bool printPids, bool printTids, bool printTime,
                             bool useColor) const;

    Level level;
    std::string category;
    // As the statement produced it, without a line end of its own.
    std::string text;
    std::uint32_t pid;
    std::uint32_t tid;
    // Taken when the message was built.
    time::RealtimeClock timestamp;
};

// A message with attributes.
class AttrMessage : public Message {
  public:
    using Message::Message;

    bool hasAttrs() const override { return true; }

    // Filled by whoever makes the message, ahead of submitting it.
    std::map<std::string, std::string> attrs;
};

}  // namespace vek::log
