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

}  // namespace vek::log
