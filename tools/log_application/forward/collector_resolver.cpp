#include "tools/log_application/forward/collector_resolver.h"

#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include "vek/base/windows.h"
// Needs windows.h.
#include <ws2tcpip.h>

#include "vek/exception.h"
#include "vek/time/clock.h"

namespace log_application {

namespace {

struct Answer {
    int error = 0;
    std::vector<RawAddress> addresses;
};

Answer lookUp(const CollectorAddress& collector) {
    addrinfo wanted = {};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = collector.isNumeric ? AI_NUMERICHOST : 0;
    addrinfo* found = nullptr;
    Answer answer;
    answer.error = getaddrinfo(collector.host.c_str(), std::to_string(collector.port).c_str(),
                               &wanted, &found);
    for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
        if (each->ai_family == AF_INET || each->ai_family == AF_INET6) {
            const auto* const bytes = reinterpret_cast<const char*>(each->ai_addr);
            answer.addresses.push_back(
                {std::string(bytes, each->ai_addrlen), each->ai_family == AF_INET6});
        }
    }
    if (found != nullptr) {
        freeaddrinfo(found);
    }
    if (answer.error == 0 && answer.addresses.empty()) {
        answer.error = WSANO_DATA;
    }
    return answer;
}

// Looks up on a thread that is left alone if it takes too long.
Answer lookUpApart(const CollectorAddress& collector, std::int64_t limitMs,
                   const std::function<bool()>& isOver) {
    constexpr std::chrono::milliseconds pollTime(50);
    const auto promise = std::make_shared<std::promise<Answer>>();
    std::future<Answer> answer = promise->get_future();
    std::thread([promise, collector] { promise->set_value(lookUp(collector)); }).detach();
    vek::time::MonotonicClock end(true);
    end += limitMs;
    while (answer.wait_for(pollTime) != std::future_status::ready) {
        if (isOver() || end - vek::time::MonotonicClock(true) <= 0) {
            throw vek::NetError(WSAETIMEDOUT);
        }
    }
    return answer.get();
}

}  // namespace

std::vector<RawAddress> resolve(const CollectorAddress& collector, std::int64_t limitMs,
                                const std::function<bool()>& isOver) {
    Answer answer =
        collector.isNumeric ? lookUp(collector) : lookUpApart(collector, limitMs, isOver);
    if (answer.error != 0) {
        throw vek::NetError(static_cast<std::uint32_t>(answer.error));
    }
    return std::move(answer.addresses);
}

}  // namespace log_application
