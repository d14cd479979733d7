#include "apps/zq/panel/ConnectionTest.h"

#include <algorithm>
#include <exception>
#include <future>

#include "apps/zq/Text.h"
#include "host/engine/os/TaskContext.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/network/OSPrivate.h"

namespace zq::panel {

namespace {

using Clock = std::chrono::steady_clock;

using Figures = std::vector<engine::ServerStatistics>;

// Of the calling thread; none without a source.
Figures figures(StatisticsSource const& statistics) {
    return statistics ? statistics() : Figures();
}

// Why the one request since then has failed.
std::string whySince(Figures const& before, Figures const& now) {
    for (engine::ServerStatistics const& server : now) {
        auto const earlier = std::ranges::find(before, server.server, &engine::ServerStatistics::server);
        std::uint64_t const failuresBefore = earlier != before.end() ? earlier->failures : 0;
        if (server.failures > failuresBefore && !server.lastError.empty()) {
            return server.lastError;
        }
    }
    return "no answer came";
}

ServerAnswer ask(HTTPConnectionInfo const& info, engine::TaskState& state,
                 StatisticsSource const& statistics) {
    engine::ScopedTask const task(state);
    Figures const before = figures(statistics); // also: from now on they are kept for this thread
    ServerAnswer answer;
    answer.name = utf8(info.server);
    Clock::time_point const begin = Clock::now();
    try {
        Zq::Ptr<iHTTPServer> const server = OSPrivate().network().createHTTPServer(info);
        Zq::Ptr<iHTTPReply> const reply = server ? server->get(L"/") : Zq::Ptr<iHTTPReply>();
        answer.ok = static_cast<bool>(reply);
        answer.reason = reply ? "answered" : server ? "no_answer" : "no_address";
        answer.status = reply ? reply->getStatus() : 0;
        answer.text = reply    ? "it answers, with status " + std::to_string(reply->getStatus())
                      : server ? whySince(before, figures(statistics))
                               : "no address can be made of this name";
    } catch (std::exception const& failure) {
        answer.text = failure.what();
    }
    answer.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    return answer;
}

} // namespace

std::vector<ServerAnswer> testConnections(std::vector<HTTPConnectionInfo> const& servers,
                                          std::chrono::milliseconds atMost,
                                          StatisticsSource const& statistics) {
    constexpr std::chrono::milliseconds step{50};
    std::vector<engine::TaskState> states(servers.size());
    std::vector<std::future<ServerAnswer>> answers;
    for (std::size_t i = 0; i < servers.size(); ++i) {
        answers.push_back(std::async(std::launch::async, ask, std::cref(servers[i]), std::ref(states[i]),
                                     std::cref(statistics)));
    }
    Clock::time_point const end = Clock::now() + atMost;
    std::vector<ServerAnswer> all;
    for (std::size_t i = 0; i < servers.size(); ++i) {
        bool isLate = false;
        while (answers[i].wait_for(step) != std::future_status::ready) {
            if (Clock::now() >= end || engine::isTaskCancelled()) {
                isLate = true;
                states[i].cancel(); // its transfer ends at once, and with it the wait
            }
        }
        all.push_back(answers[i].get());
        if (isLate && !all.back().ok) {
            all.back().text = "no answer came in time";
            all.back().reason = "late";
        }
    }
    return all;
}

} // namespace zq::panel
