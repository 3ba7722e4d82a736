// What messages cost in memory, and what happens when there is none.
#include <climits>
#include <cstdarg>
#include <memory>
#include <new>

#include <gtest/gtest.h>

#include "tests/support/counted_memory.h"
#include "tests/vek/log/log_capture.h"
#include "vek/exception.h"
#include "vek/log/manager.h"
#include "vek/log/statement.h"

namespace {

using namespace vek::log;
using support::allocatedBytes;
using support::allocations;
using support::allocationsOf;
using Limit = support::MemoryLimit;

Limit withoutMessages() {
    return Limit(INT_MAX, sizeof(Message));
}

constexpr char longName[] = "a category that is too long for a short string";
const std::string longText(80, 'x');

class Memory : public testing::Test {
  protected:
    Manager manager;
    Logger& unnamed = *manager.getLogger("");
    Logger& named = *manager.getLogger(longName);
};

TEST_F(Memory, MessageTakesOneAllocationAndNoneForEmptyFields) {
    Message* message = nullptr;
    EXPECT_EQ(allocationsOf([&] { message = unnamed.makeMessage(INFO, ""); }), 1);
    delete message;
    EXPECT_EQ(allocationsOf([&] { message = unnamed.makeAttrMessage(INFO, ""); }), 1);
    delete message;
    EXPECT_EQ(allocationsOf([&] { message = unnamed.makeMessage(INFO, "short"); }), 1);
    delete message;
    EXPECT_EQ(allocationsOf([&] { message = named.makeMessage(INFO, ""); }), 2);
    delete message;
}

TEST_F(Memory, MessageIsAsSmallAsItsFields) {
    std::string text = longText;
    const std::size_t before = allocatedBytes();
    const std::unique_ptr<Message> message(unnamed.makeMessage(INFO, std::move(text)));
    EXPECT_LE(allocatedBytes() - before + longText.capacity() + 1, 320u);
}

TEST_F(Memory, StatementOf80CharactersTakesAtMost320BytesOnTheHeap) {
    Logger& logger = *manager.getLogger("TOLMAR_HELPER");
    constexpr int count = 9000;
    VEK_LOG(logger, INFO, longText);
    const std::size_t bytesBefore = allocatedBytes();
    const int allocationsBefore = allocations();
    for (int i = 0; i < count; ++i) {
        VEK_LOG(logger, INFO, longText);
    }
    EXPECT_LE((allocatedBytes() - bytesBefore) / count, 320u);
    // The object, its text, and now and then a piece of the queue; the stream has its memory.
    EXPECT_LE(allocations() - allocationsBefore, 2 * count + count / 50);
}

TEST_F(Memory, StatementWithASpentMessageAllocatesNothing) {
    VEK_LOG(named, INFO, longText << longText);
    VEK_LOG(named, INFO, longText << longText);
    manager.start();
    // Waits until the messages are spent.
    manager.shutdown();
    Logger& logger = *manager.getLogger(longName);
    VEK_LOG(logger, INFO, "renews the stream");
    EXPECT_EQ(allocationsOf([&] { VEK_LOG(logger, INFO, longText << 1 << 0.5); }), 0);
    EXPECT_GT(allocationsOf([&] { VEK_LOG(logger, INFO, longText << 2 << 0.5); }), 0);
}

TEST_F(Memory, SpentMessageIsNoUseIfItsTextFindsNoMemory) {
    VEK_LOG(unnamed, INFO, "short");
    manager.start();
    manager.shutdown();
    Logger& logger = *manager.getLogger("");
    Message* message = nullptr;
    {
        std::string text = longText;
        const Limit limit(0);
        message = logger.makeMessage(INFO, std::move(text));
    }
    EXPECT_EQ(message, nullptr);
}

TEST_F(Memory, LongTextIsMovedAlsoIfThereIsASpentMessage) {
    VEK_LOG(unnamed, INFO, "short");
    manager.start();
    manager.shutdown();
    const Logger& logger = *manager.getLogger("");
    std::string text(1000, 'x');
    const char* const characters = text.data();
    const std::unique_ptr<Message> message(logger.makeMessage(INFO, std::move(text)));
    EXPECT_EQ(message->text.data(), characters);
}

TEST_F(Memory, StatementThatIsOffAllocatesNothing) {
    EXPECT_EQ(allocationsOf([&] { VEK_LOG(named, TRACE, longText << longText); }), 0);
}

TEST_F(Memory, MakingAMessageWithoutMemoryGivesNull) {
    int made = 0;
    // Whichever of its allocations fails, until there is enough for all of them.
    for (int count = 0; count < 6; ++count) {
        std::string text = longText;
        Message* messages[4] = {};
        {
            const Limit limit(count);
            messages[0] = named.makeMessage(INFO, std::move(text));
        }
        {
            const Limit limit(count);
            messages[1] = named.makeMessagef(INFO, "%s%s", longText.c_str(), "%");
        }
        {
            const Limit limit(count);
            messages[2] = named.makeAttrMessagef(INFO, "%s", longText.c_str());
        }
        {
            const Limit limit(count);
            messages[3] = unnamed.makeAttrMessage(INFO, "");
        }
        for (const Message* const message : messages) {
            EXPECT_TRUE(message == nullptr || count > 0);
            made += message != nullptr;
            delete message;
        }
    }
    EXPECT_GE(made, 4 * 3);
    EXPECT_LE(made, 4 * 5);
}

template <class Work>
std::string usageErrorOf(Work work) {
    try {
        work();
    } catch (const vek::UsageError& error) {
        return error.what();
    }
    return "";
}

constexpr char receivedNull[] = "Usage error: log manager: received null message";

TEST_F(Memory, EmitWithoutMemoryForTheMessageThrowsWhatNullDoes) {
    EXPECT_EQ(usageErrorOf([&] {
                  const Limit limit = withoutMessages();
                  unnamed.emit(INFO, "text");
              }),
              receivedNull);
}

TEST_F(Memory, StatementWithoutMemoryForTheMessageThrowsAndReleasesTheLogger) {
    EXPECT_EQ(usageErrorOf([&] {
                  const Limit limit = withoutMessages();
                  VEK_LOG(unnamed, INFO, "text");
              }),
              receivedNull);
    std::thread([&] { VEK_LOG(unnamed, INFO, "goes on"); }).join();
}

// As a caller with a "..." of its own.
void logByList(Logger& logger, const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    logger.logfv(INFO, pattern, arguments);
    va_end(arguments);
}

TEST_F(Memory, LogfWithoutMemoryLosesTheStatementInSilence) {
    vek_test::LogCapture capture(manager);
    {
        const Limit limit = withoutMessages();
        unnamed.logf(INFO, "%s", "lost");
        logByList(unnamed, "%s", "lost");
    }
    for (int count = 0; count < 2; ++count) {
        const Limit limit(count);
        named.logf(INFO, "%s", longText.c_str());
    }
    unnamed.logf(INFO, "kept");
    manager.start();
    manager.shutdown();
    EXPECT_EQ(capture.texts(), std::vector<std::string>{"kept"});
}

class CountedMessage : public Message {
  public:
    CountedMessage() : Message("", "", INFO, 0) { ++count; }
    ~CountedMessage() override { --count; }
    static inline int count = 0;
};

TEST_F(Memory, MessageThatTheQueueHasNoMemoryForIsDestroyed) {
    int queued = 0;
    EXPECT_THROW(
        for (;;) {
            Message* const message = new CountedMessage;
            // The queue grows by pieces.
            const Limit limit(0);
            manager.submit(message);
            ++queued;
        },
        std::bad_alloc);
    EXPECT_EQ(CountedMessage::count, queued);
}

// Variables are where the end of the checked build's tests looks for mutexes that live until the
// process ends: the runtime keeps the event of one for which a thread has waited.
TEST(ManagerOfTheProcess, IsAVariable) {
    MEMORY_BASIC_INFORMATION area = {};
    ASSERT_NE(VirtualQuery(&Manager::instance(), &area, sizeof area), 0u);
    EXPECT_EQ(area.AllocationBase, GetModuleHandleA(nullptr));
}

}  // namespace
