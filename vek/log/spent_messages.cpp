#include "vek/log/spent_messages.h"

#include <typeinfo>
#include <utility>

namespace vek::log {

std::unique_ptr<Message> SpentMessages::take() {
    std::unique_ptr<Message> message;
    if (!isBusy.test_and_set(std::memory_order_acquire)) {
        if (count != 0) {
            message = std::move(messages[--count]);
        }
        isBusy.clear(std::memory_order_release);
    }
    return message;
}

void SpentMessages::keep(std::unique_ptr<Message> message) {
    const Message& spent = *message;
    if (typeid(spent) != typeid(Message) || spent.text.capacity() > longestText ||
        spent.category.capacity() > longestText) {
        return;
    }
    if (!isBusy.test_and_set(std::memory_order_acquire)) {
        if (count != limit) {
            messages[count++] = std::move(message);
        }
        isBusy.clear(std::memory_order_release);
    }
}

}  // namespace vek::log
