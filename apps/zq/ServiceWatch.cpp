#include "apps/zq/ServiceWatch.h"

#include <algorithm>
#include <utility>

namespace zq {

namespace {

using Statistics = std::vector<engine::ServerStatistics>;

engine::ServerStatistics find(Statistics const& all, std::string const& server) {
    auto const found = std::ranges::find(all, server, &engine::ServerStatistics::server);
    return found != all.end() ? *found : engine::ServerStatistics{};
}

} // namespace

ServiceWatch::ServiceWatch(StatisticsSource statistics, AnswerWatch const& answers)
    : statistics_(std::move(statistics)), answers_(answers), before_(statistics_()),
      heardBefore_(answers.heard()) {}

std::optional<std::string> ServiceWatch::failure() const {
    for (engine::ServerStatistics const& now : statistics_()) {
        engine::ServerStatistics const earlier = find(before_, now.server);
        if (now.failures > earlier.failures) {
            return "the request to the service failed: " + now.lastError;
        }
        if (now.refusals > earlier.refusals) {
            return "the service refused the request: " + now.lastError;
        }
    }
    if (AnswerWatch::Heard heard = answers_.heard(); heard.failures > heardBefore_.failures) {
        return std::move(heard.lastFailure);
    }
    return std::nullopt;
}

bool ServiceWatch::sawRequest() const {
    return std::ranges::any_of(statistics_(), [&](engine::ServerStatistics const& now) {
        return now.requests > find(before_, now.server).requests;
    });
}

ServiceWatch::Fate ServiceWatch::fate() const {
    bool sent = false;
    bool lost = false;
    std::uint64_t errors = 0;
    std::uint64_t rejections = 0;
    for (engine::ServerStatistics const& now : statistics_()) {
        engine::ServerStatistics const earlier = find(before_, now.server);
        sent = sent || now.bytesSent > earlier.bytesSent;
        lost = lost || now.failures > earlier.failures || now.relayed > earlier.relayed;
        errors += now.refusals - earlier.refusals;
        rejections += now.rejections - earlier.rejections;
    }
    if (!sent) {
        return Fate::notSent;
    }
    AnswerWatch::Heard const heard = answers_.heard();
    std::uint64_t const refusals = heard.refusals - heardBefore_.refusals;
    std::uint64_t const unreadable = heard.failures - heardBefore_.failures - refusals;
    // An error status comes with any text. What cannot be understood and may have come without one is lost.
    if (lost || (unreadable > 0 && unreadable + refusals > errors)) {
        return Fate::lost;
    }
    bool const allSayNo = errors == rejections && unreadable == 0 && refusals >= errors;
    if (errors > 0 && !allSayNo) {
        return Fate::ended;
    }
    return refusals > 0 ? Fate::refused : Fate::answered;
}

} // namespace zq
