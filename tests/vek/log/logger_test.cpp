#include "vek/log/logger.h"

#include <gtest/gtest.h>

#include "tests/vek/log/log_capture.h"
#include "vek/exception.h"

namespace {

using namespace vek::log;
using vek_test::Captured;
using vek_test::LogCapture;
using Texts = std::vector<std::string>;

class LoggerOperations : public testing::Test {
  protected:
    std::vector<Captured> delivered() {
        manager.start();
        manager.shutdown();
        return capture.messages();
    }
    Texts deliveredTexts() {
        delivered();
        return capture.texts();
    }

    Manager manager;
    LogCapture capture{manager};
    Logger& logger = *manager.getLogger("category");
};

// The same operation as with "...", by way of a ready argument list.
void logByList(Logger& logger, Level level, const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    logger.logfv(level, pattern, arguments);
    va_end(arguments);
}

template <class Made>
Made* makeByList(const Logger& logger, Level level, const char* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    Made* made = nullptr;
    if constexpr (std::is_same_v<Made, Message>) {
        made = logger.makeMessagefv(level, pattern, arguments);
    } else {
        made = logger.makeAttrMessagefv(level, pattern, arguments);
    }
    va_end(arguments);
    return made;
}

std::int64_t now() {
    return vek::time::RealtimeClock(true).getValue();
}

TEST_F(LoggerOperations, MessageIsStampedWhenItIsMade) {
    const std::int64_t before = now();
    const std::unique_ptr<Message> message(logger.makeMessage(WARN, "text"));
    const std::int64_t after = now();
    EXPECT_EQ(message->level, WARN);
    EXPECT_EQ(message->category, "category");
    EXPECT_EQ(message->text, "text");
    EXPECT_EQ(message->pid, GetCurrentProcessId());
    EXPECT_EQ(message->tid, GetCurrentThreadId());
    EXPECT_GE(message->timestamp.getValue(), before);
    EXPECT_LE(message->timestamp.getValue(), after);
    EXPECT_FALSE(message->hasAttrs());
}

TEST_F(LoggerOperations, StampStaysHoweverLongTheMessageWaits) {
    logger.emit(INFO, "waits");
    const std::int64_t after = now();
    while (now() <= after + 20) {
        Sleep(1);
    }
    std::thread([&] { manager.start(); }).join();
    manager.shutdown();
    const Captured message = capture.messages().at(0);
    EXPECT_LE(message.timestamp, after);
    EXPECT_EQ(message.tid, GetCurrentThreadId());
}

TEST_F(LoggerOperations, AttrMessageSaysSoAlsoWithoutAttributes) {
    const std::unique_ptr<Message> message(logger.makeAttrMessage(INFO, "text"));
    EXPECT_TRUE(message->hasAttrs());
    EXPECT_TRUE(static_cast<AttrMessage&>(*message).attrs.empty());
    EXPECT_EQ(message->text, "text");
}

TEST_F(LoggerOperations, AttributesComeOutInTheOrderOfTheirKeys) {
    AttrMessage* const message = logger.makeAttrMessage(INFO, "text");
    message->attrs["b"] = "2";
    message->attrs["a"] = "1";
    message->attrs["B"] = "0";
    message->attrs["b"] = "3";
    logger.submit(message);
    const Captured captured = delivered().at(0);
    EXPECT_TRUE(captured.withAttrs);
    std::string list;
    for (const auto& [key, value] : captured.attrs) {
        list += key + "=" + value + " ";
    }
    EXPECT_EQ(list, "B=0 a=1 b=3 ");
}

TEST_F(LoggerOperations, AllFormsFormatTheirText) {
    logger.emit(ERR, "emit %d");
    logger.logf(WARN, "logf %d %s", 1, "x");
    logByList(logger, INFO, "logfv %2$s %1$d", 2, "y");
    logger.submit(logger.makeMessage(DEBUG, "makeMessage %d"));
    logger.submit(logger.makeMessagef(TRACE, "makeMessagef %c", 0));
    logger.submit(makeByList<Message>(logger, ERR, "makeMessagefv %5.2f", 1.5));
    logger.submit(logger.makeAttrMessage(WARN, "makeAttrMessage %d"));
    logger.submit(logger.makeAttrMessagef(INFO, "makeAttrMessagef %x", 255));
    logger.submit(makeByList<AttrMessage>(logger, DEBUG, "makeAttrMessagefv %%"));
    std::string seen;
    for (const Captured& message : delivered()) {
        seen +=
            std::to_string(message.level) + (message.withAttrs ? "a " : "  ") + message.text + "\n";
    }
    EXPECT_EQ(seen, std::string("1  emit %d\n"
                                "2  logf 1 x\n"
                                "3  logfv y 2\n"
                                "4  makeMessage %d\n"
                                "5  makeMessagef ") +
                        '\0' +
                        "\n"
                        "1  makeMessagefv  1.50\n"
                        "2a makeAttrMessage %d\n"
                        "3a makeAttrMessagef ff\n"
                        "4a makeAttrMessagefv %\n");
}

TEST_F(LoggerOperations, ATextArgumentIsNotTakenForAReadyList) {
    char text[] = "text";
    logger.logf(INFO, "%s", text);
    EXPECT_EQ(deliveredTexts(), Texts{"text"});
}

TEST_F(LoggerOperations, LongAndHostileTextsArriveWhole) {
    const std::string megabyte = std::string(1 << 20, '%') + std::string("\0\r\n", 3);
    logger.emit(INFO, megabyte);
    logger.logf(INFO, "%s!", megabyte.c_str());
    EXPECT_EQ(deliveredTexts(), (Texts{megabyte, std::string(1 << 20, '%') + "!"}));
}

TEST_F(LoggerOperations, DontTestTheLoggersLevel) {
    manager.setLoggerLevel("category", OFF);
    logger.emit(TRACE, "emit");
    logger.logf(TRACE, "logf");
    EXPECT_EQ(deliveredTexts(), (Texts{"emit", "logf"}));
}

TEST_F(LoggerOperations, SubmittingNullThrows) {
    try {
        logger.submit(nullptr);
        ADD_FAILURE();
    } catch (const vek::UsageError& error) {
        EXPECT_STREQ(error.what(), "Usage error: log manager: received null message");
    }
}

TEST_F(LoggerOperations, PidIsTheCachedOneAndOldMessagesKeepTheirs) {
    logger.setPid(4711);  // as if this were the process before a fork
    logger.emit(INFO, "parent");
    const std::unique_ptr<Message> made(logger.makeMessage(INFO, "made by the parent"));
    manager.onFork();
    logger.emit(INFO, "child");
    EXPECT_EQ(made->pid, 4711u);
    const std::vector<Captured> messages = delivered();
    EXPECT_EQ(messages[0].pid, 4711u);
    EXPECT_EQ(messages[1].pid, GetCurrentProcessId());
}

}  // namespace
