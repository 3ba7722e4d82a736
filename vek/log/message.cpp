#include "vek/log/message.h"

#include <utility>

#include "vek/base/windows.h"

namespace vek::log {

Message::Message(std::string loggerName, std::string messageText, Level messageLevel,
                 std::uint32_t messagePid)
    : level(messageLevel),
      category(std::move(loggerName)),
      text(std::move(messageText)),
      pid(messagePid),
      tid(GetCurrentThreadId()),
      timestamp(true) {}

void Message::reuse(const std::string& loggerName, std::string_view messageText, Level messageLevel,
                    std::uint32_t messagePid) {
    category = loggerName;
    text = messageText;
    level = messageLevel;
    pid = messagePid;
    tid = GetCurrentThreadId();
    timestamp.refresh();
}

}  // namespace vek::log
