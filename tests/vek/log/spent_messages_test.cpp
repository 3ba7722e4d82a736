#include "vek/log/spent_messages.h"

#include <atomic>
#include <string>

#include <gtest/gtest.h>

#include "tests/vek/log/log_capture.h"
#include "tests/vek/thread/lock_support.h"

namespace {

using namespace vek::log;

template <class Made = Message>
std::unique_ptr<Made> made(const std::string& text = "text", const std::string& category = "x") {
    return std::make_unique<Made>(category, text, INFO, 1u);
}

TEST(SpentMessages, GivesBackWhatItKept) {
    SpentMessages spent;
    EXPECT_EQ(spent.take(), nullptr);
    auto message = made();
    const Message* const kept = message.get();
    spent.keep(std::move(message));
    EXPECT_EQ(spent.take().get(), kept);
    EXPECT_EQ(spent.take(), nullptr);
}

// Counts its objects.
class Derived : public Message {
  public:
    Derived() : Message("", "", INFO, 0) { ++count; }
    ~Derived() override { --count; }
    static inline int count = 0;
};

TEST(SpentMessages, KeepsNoOtherClassAndNoLongText) {
    SpentMessages spent;
    spent.keep(std::make_unique<Derived>());
    EXPECT_EQ(Derived::count, 0);
    spent.keep(made<AttrMessage>());
    spent.keep(made(std::string(SpentMessages::longestText + 1, 'x')));
    spent.keep(made("", std::string(SpentMessages::longestText + 1, 'x')));
    EXPECT_EQ(spent.take(), nullptr);
    spent.keep(made(std::string(SpentMessages::longestText, 'x')));
    EXPECT_NE(spent.take(), nullptr);
}

TEST(SpentMessages, KeepsALimitedNumber) {
    SpentMessages spent;
    for (std::size_t i = 0; i < 2 * SpentMessages::limit; ++i) {
        spent.keep(made());
    }
    std::size_t kept = 0;
    while (spent.take() != nullptr) {
        ++kept;
    }
    EXPECT_EQ(kept, SpentMessages::limit);
}

TEST(SpentMessages, GivesEachMessageToOneThread) {
    SpentMessages spent;
    std::atomic<int> failures = 0;
    {
        std::vector<std::unique_ptr<vek_test::ScopedThread>> threads;
        for (unsigned i = 1; i <= 4; ++i) {
            threads.push_back(std::make_unique<vek_test::ScopedThread>([&, i] {
                for (int round = 0; round < 20'000; ++round) {
                    std::unique_ptr<Message> message = spent.take();
                    if (message == nullptr) {
                        message = made();
                    }
                    message->pid = i;
                    message->text.assign(i, 'x');
                    failures += message->pid != i || message->text.size() != i;
                    spent.keep(std::move(message));
                }
            }));
        }
    }
    EXPECT_EQ(failures, 0);
}

TEST(MessageThatIsUsedAgain, HasNothingOfItsFormerStatement) {
    Message message("a category that is longer", "a text", ERR, 7);
    message.tid = 0;
    message.timestamp -= 100'000;
    const std::int64_t before = vek::time::RealtimeClock(true).getValue();
    message.reuse("x", "another", DEBUG, 8);
    EXPECT_EQ(message.category, "x");
    EXPECT_EQ(message.text, "another");
    EXPECT_EQ(message.level, DEBUG);
    EXPECT_EQ(message.pid, 8u);
    EXPECT_EQ(message.tid, GetCurrentThreadId());
    EXPECT_GE(message.timestamp.getValue(), before);
}

}  // namespace
