#include "tools/log_application/connection/client.h"

#include "tools/log_application/program/failure.h"
#include "tools/log_application/show/escape.h"
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace log_application {

namespace {

using vek::log::Telegram;

constexpr std::size_t mostSinks = 10'000;

// Enough to recognise it.
std::string beginningOf(const std::string& text) {
    constexpr std::size_t shown = 40;
    return escapeControls(text.substr(0, shown)) + (text.size() > shown ? "..." : "");
}

}  // namespace

Client::Client(const Process& process, StopSignal* stopSignal, std::int64_t answerLimitMs)
    : label(process.label()), stop(stopSignal), answerLimit(answerLimitMs) {
    connectToAny(process.endpoints);
    buffer.setSocket(socket.get());
}

void Client::connectToAny(const std::vector<Endpoint>& endpoints) {
    if (endpoints.empty()) {
        throw Failure(exitLost, label + " can't be connected to: the system doesn't tell its port.",
                      howToGiveAPort);
    }
    std::string reasons;
    for (const Endpoint& endpoint : endpoints) {
        try {
            socket = std::make_unique<ClientSocket>(stop);
            socket->connectTo(endpoint);
            connectedTo = endpoint;
            return;
        } catch (const vek::Exception& error) {
            reasons += (reasons.empty() ? "" : "; ") + endpoint.text() + ": " +
                       escapeControls(error.what());
        }
    }
    throw Failure(
        exitLost, label + " can't be connected to. " + reasons,
        "It may have ended, or have a new port: \"log_application ps\" shows who is there.");
}

Failure Client::strange(const std::string& what) const {
    return Failure(exitLost, label + " has sent " + what + ".",
                   "Is " + connectedTo.text() +
                       " the port of a log service? \"log_application ps\" shows it.");
}

Failure Client::silent(const vek::Exception& error) const {
    const auto* const failure = dynamic_cast<const vek::NetError*>(&error);
    if (failure != nullptr && failure->code() == WSAETIMEDOUT) {
        return Failure(exitLost, label + " doesn't answer.",
                       "Its log service may be held up by another client; try again.");
    }
    return Failure(exitLost,
                   "The connection to " + label + " was lost: " + escapeControls(error.what()),
                   "Try again; \"log_application ps\" shows who is there.");
}

void Client::request(Telegram& telegram, const std::function<void()>& readAnswer) {
    socket->limitReading(answerLimit);
    try {
        telegram.send();
        readAnswer();
    } catch (const Failure&) {
        throw;
    } catch (const Telegram::ParseError&) {
        throw strange("what is no telegram");
    } catch (const vek::RuntimeError& error) {
        throw strange("a frame that is too large (" + escapeControls(error.what()) + ")");
    } catch (const vek::Exception& error) {
        throw silent(error);
    }
}

void Client::receive(Telegram& telegram, const std::string& type) {
    if (!telegram.receive()) {
        throw Failure(exitLost, label + " has closed the connection without an answer.",
                      "It may be ending, or refuse what it was asked for; its own error output may "
                      "tell more.");
    }
    if (telegram.type == vek::log::unsupported) {
        throw Failure(exitNotDone, label + " doesn't know this request.",
                      "It stands on another version of the log service.");
    }
    if (telegram.type != type) {
        throw strange("\"" + beginningOf(telegram.type) + "\" in place of an answer");
    }
}

Telegram Client::answerOf(Telegram& telegram, const std::string& type) {
    Telegram answer(&buffer);
    request(telegram, [&] { receive(answer, type); });
    return answer;
}

void Client::requestAck(Telegram& telegram) {
    request(telegram, [&] {
        Telegram answer(&buffer);
        receive(answer, telegram.type);
        if (answer.hasParam("error")) {
            throw Failure(exitNotDone, label + " refused: " + escapeControls(answer.param("error")),
                          "What it says is the reason; its own error output may tell more.");
        }
        if (!answer.hasParam("ack")) {
            throw strange("an answer that is neither yes nor no");
        }
    });
}

std::string Client::defaultLevel() {
    Telegram question(&buffer);
    question.type = "get-default-scope";
    const Telegram answer = answerOf(question, "default-scope");
    if (!answer.hasParam("scope")) {
        throw strange("an answer without a level");
    }
    return answer.param("scope");
}

std::map<std::string, std::string> Client::loggers() {
    Telegram question(&buffer);
    question.type = "agent-list";
    const Telegram answer = answerOf(question, "agent-list");
    return {answer.params.begin(), answer.params.end()};
}

void Client::setDefaultLevel(vek::log::Level level) {
    Telegram telegram(&buffer);
    telegram.type = "change-default-scope";
    telegram.addParam("scope", std::string(levelName(level)));
    requestAck(telegram);
}

void Client::setLevels(const std::vector<LevelChange>& changes) {
    Telegram telegram(&buffer);
    telegram.type = "change-scope";
    std::size_t size = telegram.type.size() + 1;
    for (const LevelChange& change : changes) {
        const std::string level = levelName(change.level);
        // With "=" and the separator.
        const std::size_t added = change.logger.size() + level.size() + 2;
        if (size + added > longestRequest && !telegram.params.empty()) {
            requestAck(telegram);
            telegram.clearParams();
            size = telegram.type.size() + 1;
        }
        telegram.addParam(change.logger, level);
        size += added;
    }
    if (!telegram.params.empty()) {
        requestAck(telegram);
    }
}

std::vector<SinkInfo> Client::sinks() {
    Telegram question(&buffer);
    question.type = "evidence-info";
    std::vector<SinkInfo> found;
    request(question, [&] {
        Telegram answer(&buffer);
        for (;;) {
            receive(answer, question.type);
            if (answer.hasParam(vek::log::endOfReply)) {
                return;
            }
            if (found.size() == mostSinks) {
                throw strange("an answer without an end");
            }
            found.push_back({answer.param("id"), answer.param("enabled"), answer.param("max_scope"),
                             answer.param("custom_format"), answer.param("path"),
                             answer.param("peer")});
        }
    });
    return found;
}

void Client::save() {
    Telegram telegram(&buffer);
    telegram.type = "persist-config";
    requestAck(telegram);
}

bool Client::isAnswering() {
    Telegram question(&buffer);
    question.type = "get-default-scope";
    socket->limitReading(answerLimit);
    try {
        question.send();
        char byte = 0;
        socket->read(&byte, sizeof byte);
        return true;
    } catch (const vek::NetError& error) {
        return error.code() != WSAETIMEDOUT;
    }
}

void Client::startMessages() {
    Telegram telegram(&buffer);
    telegram.type = "get-messages";
    request(telegram, [] {});
    socket->limitReading(std::nullopt);
}

}  // namespace log_application
