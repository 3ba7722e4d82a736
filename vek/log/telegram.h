// vek::log::Telegram: the message of the log service's protocol, a type word and its parameters.
//
// The text is the type, a colon, and the parameters separated by 0x1F; a parameter is a key and, if
// it has a value, "=" and the value. Nothing is escaped: a key or value that contains a separator
// is read differently. The text fills one datagram, or one frame on a stream (net/tcp_buffer.h).
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vek/exception.h"
#include "vek/log/service/telegram_params.h"

namespace vek::net {
class TCPBuffer;
}

namespace vek::log {

// The key that ends a reply of several telegrams.
extern const std::string endOfReply;
// The type of the reply to an unknown telegram.
extern const std::string unsupported;

// Not thread-safe. Reusable: receiving and parsing replace the type and the parameters.
class Telegram {
  public:
    // A text is no telegram: "ParseError: " and the message.
    class ParseError : public ExceptionOf<ParseError> {
      public:
        explicit ParseError(const std::string& message) : ExceptionOf("ParseError: " + message) {}
    };

    // The peer refused a request: "LogicalError: " and its message.
    class LogicalError : public ExceptionOf<LogicalError> {
      public:
        explicit LogicalError(const std::string& message)
            : ExceptionOf("LogicalError: " + message) {}
    };

    // `connection` is used to receive and send the telegram; null for a datagram's. Not owned.
    explicit Telegram(net::TCPBuffer* connection = nullptr) : buffer(connection) {}

    std::string type;
    TelegramParams params;
    // Set by `receive` at the end of the stream.
    bool closed = false;

    // Splits `text` into `type` and `params`, and ignores empty pieces between separators. `text`
    // must not be part of this telegram. Throws ParseError if there is no colon; the telegram is
    // empty then.
    void parse(std::string_view text);

    // Replaces `text`, which must not be part of this telegram, by the text of this telegram. An
    // empty value is written without "=".
    void serialize(std::string& text) const;

    // Adds an entry, also if there is one of the same key. A bool becomes "true" or "false", a
    // number its decimal text. Moves the entries that are there: references from `param` become
    // invalid.
    void addParam(std::string_view key, std::string_view value);
    void addParam(std::string_view key, std::int64_t number);
    template <std::same_as<bool> Bool>
    void addParam(std::string_view key, Bool value) {
        addParam(key, std::string_view(value ? "true" : "false"));
    }

    bool hasParam(std::string_view key) const;  // whether there is an entry of `key`

    // Returns the first value of `key`, valid until the next change of `params`: an addition, a
    // removal, `parse` or `receive`. If there is none, returns a reference to `noParam`, which is
    // empty; compare the addresses to distinguish that from an empty value.
    const std::string& param(std::string_view key) const;
    static const std::string noParam;

    // All values of `key`, in order.
    std::vector<std::string> paramValues(std::string_view key) const;

    // Removes all entries of `key` and returns their number.
    std::size_t eraseParam(std::string_view key);

    void clearParams() { params.clear(); }  // removes all entries

    // The following operations use the connection. They throw UsageError if there is none, and what
    // TCPBuffer throws: RuntimeError for a telegram that is too large, NetError if the socket
    // fails.

    // Blocks until a telegram arrives, and reads it. At the end of the stream it returns false and
    // sets `closed`; the telegram is empty then. Throws ParseError as `parse` does.
    bool receive();

    // Sends this telegram.
    void send();

    // Send another telegram of this type with one parameter: "ack", or "error" with `text`. This
    // telegram isn't changed.
    void sendAck();
    void sendError(const std::string& text);

    // Call it on the telegram that was sent. Blocks until the reply arrives. Returns true for the
    // peer's sendAck, and throws LogicalError with its text for the peer's sendError. Returns false
    // at the end of the stream, and for any other reply, which it reports on std::cerr. Throws
    // ParseError for a reply that is no telegram.
    bool waitForAck();

  private:
    net::TCPBuffer& connection() const;
    // The size of the text in bytes, and the text itself, written to `target`.
    std::size_t textSize() const;
    void writeText(char* target) const;

    net::TCPBuffer* buffer;
};

}  // namespace vek::log
