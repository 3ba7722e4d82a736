#include "tools/log_application/web/web_page.h"

#include <memory>

#include "tools/log_application/connection/level_change.h"
#include "tools/log_application/program/deep_stack.h"
#include "tools/log_application/program/failure.h"
#include "tools/log_application/web/page_files.h"

namespace log_application {

namespace {

constexpr int notFound = 404;
constexpr int conflict = 409;
constexpr int overloaded = 503;

// The longest time that a level may be set for, in seconds: a day.
constexpr std::uint32_t longestTime = 86'400;

std::uint32_t numberOf(const WebRequest& request, const std::string& name, std::uint32_t highest) {
    const std::string text = request.parameter(name);
    const std::optional<std::uint32_t> number = parseNumber(text, highest);
    if (!number) {
        throw Failure(exitUsage, "\"" + escapeControls(text) + "\" is no " + name + ".", "");
    }
    return *number;
}

TimedLevels::Logger loggerOf(const WebRequest& request) {
    const auto found = request.parameters.find("logger");
    return found == request.parameters.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

const std::vector<std::string> WebPage::postPaths = {"back", "level"};

WebResponse WebPage::answer(const WebRequest& request) {
    WebResponse response;
    if (request.path == "events") {
        return stream(request);
    }
    if (request.method == "POST") {
        try {
            change(request);
        } catch (const Failure& failure) {
            response.status = conflict;
            response.body = failure.description() + " " + failure.whatNext();
        }
        return response;
    }
    const std::optional<PageFile> file = findPageFile(request.path);
    if (!file) {
        response.status = notFound;
        return response;
    }
    response.type = file->type;
    response.body = file->text;
    return response;
}

WebResponse WebPage::stream(const WebRequest& request) {
    WebResponse response;
    if (++streams > mostStreams) {
        --streams;
        response.status = overloaded;
        response.body = "Too many pages of this program are open. Close one of them.\n";
        return response;
    }
    // Counts the stream until the response is destroyed, whether or not it was written.
    const std::shared_ptr<void> counted(nullptr, [this](void*) { --streams; });
    response.type = "text/event-stream";
    response.stream = [this, request, counted](const BodyWriter& write) {
        runOnDeepStack([&] { EventStream(sources).run(request, write); });
    };
    return response;
}

void WebPage::change(const WebRequest& request) {
    const std::uint32_t id = numberOf(request, "process", 0xFFFFFFFF);
    const TimedLevels::Logger logger = loggerOf(request);
    if (request.path == "back") {
        sources.processes.putBack(id, logger);
        return;
    }
    const std::string text = request.parameter("level");
    const vek::log::Level level =
        logger && text == "DEFAULT" ? vek::log::DEFAULT : parseSeverity("the level", text);
    std::optional<std::int64_t> forMs;
    if (request.parameters.contains("seconds")) {
        forMs = std::int64_t{1000} * numberOf(request, "seconds", longestTime);
    }
    sources.processes.setLevel(id, logger, level, forMs);
}

}  // namespace log_application
