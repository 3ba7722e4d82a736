// vek::log::SpentMessages: messages that every sink has seen, kept for the next statements, so that
// these allocate nothing.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

#include "vek/base/no_copy.h"
#include "vek/log/message.h"

namespace vek::log {

// Keeps a limited number of messages with short texts. A thread that finds another one at work here
// doesn't wait: it gets no message, or destroys its own. Thread-safe. Throws nothing.
class SpentMessages : public NoCopy {
  public:
    // As many as some threads log before they pause.
    static constexpr std::size_t limit = 256;
    // Of the memory of a text and of a category, in characters.
    static constexpr std::size_t longestText = 512;

    // Returns a message with old contents, or null.
    std::unique_ptr<Message> take();

    // Keeps `message`, not null, or destroys it. Only objects of the class Message itself are kept.
    void keep(std::unique_ptr<Message> message);

  private:
    std::array<std::unique_ptr<Message>, limit> messages;
    std::size_t count = 0;
    // A thread uses the two above.
    std::atomic_flag isBusy;
};

}  // namespace vek::log
