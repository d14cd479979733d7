// The rules that wait to meet a request, and what meets them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "apps/tarn7d/FaultRule.h"

namespace tarn7d {

// Any thread.
class FaultDesk {
public:
    struct Entry {
        int id = 0;
        FaultRule rule;
        int left = 0; // requests that it will still meet
        int met = 0;
    };

    // Adds the rule behind the others. Gives its number.
    int add(FaultRule rule);
    // All rules in their order, also those that have met all their requests.
    [[nodiscard]] std::vector<Entry> list() const;
    // Removes all rules, and lets everybody go who waits because of one.
    void clear();

    // The first rule that the request meets, which has then met one more; a request meets at most one. The
    // words are those of the request's commands, if it has any.
    [[nodiscard]] std::optional<FaultRule> take(std::string_view path,
                                                std::span<std::string const> words = {});
    // False when no rule asks for command words, so that they need not be looked for.
    [[nodiscard]] bool hasCommandRules() const;

    // Waits so long, or until clear() or end().
    void pause(std::chrono::milliseconds time);
    // Lets everybody who waits go, and nobody wait any more.
    void end();

private:
    mutable std::mutex mutex_; // guards everything below
    std::condition_variable released_;
    std::vector<Entry> entries_;
    int nextId_ = 1;
    std::uint64_t clearings_ = 0;
    bool ended_ = false;
};

} // namespace tarn7d
