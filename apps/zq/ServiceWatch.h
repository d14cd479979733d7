// What became of the requests of one command. The repositories report most failures as an empty result; the
// network's figures and the answers tell why.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/zq/AnswerWatch.h"
#include "host/engine/network/ServerStatistics.h"

namespace zq {

using StatisticsSource = std::function<std::vector<engine::ServerStatistics>()>;

class ServiceWatch {
public:
    // Looks from now on. `answers` outlives this.
    ServiceWatch(StatisticsSource statistics, AnswerWatch const& answers);

    // Why a request since then failed, one line; nothing where each got what it asked for.
    [[nodiscard]] std::optional<std::string> failure() const;
    // True when a request was made since then.
    [[nodiscard]] bool sawRequest() const;

    // What is certain of the requests since then, in the order of precedence.
    enum class Fate {
        notSent,  // no byte has left this machine
        lost,     // an answer did not come whole, cannot be understood, or is of a server between
        ended,    // answers have error statuses of the service, which has ended its work on them
        refused,  // all came, and one says no in the service's words
        answered, // all came
    };
    [[nodiscard]] Fate fate() const;

private:
    StatisticsSource statistics_;
    AnswerWatch const& answers_;
    std::vector<engine::ServerStatistics> before_;
    AnswerWatch::Heard heardBefore_;
};

} // namespace zq
