#include "apps/tarn7d/FaultDesk.h"

#include <algorithm>

namespace tarn7d {

namespace {

bool meets(FaultRule const& rule, std::string_view path, std::span<std::string const> words) {
    if (!rule.path.empty()) {
        return path.starts_with(rule.path);
    }
    return !words.empty() &&
           (rule.command == "*" || std::find(words.begin(), words.end(), rule.command) != words.end());
}

} // namespace

int FaultDesk::add(FaultRule rule) {
    std::lock_guard const lock(mutex_);
    int const left = rule.count;
    entries_.push_back({nextId_, std::move(rule), left, 0});
    return nextId_++;
}

std::vector<FaultDesk::Entry> FaultDesk::list() const {
    std::lock_guard const lock(mutex_);
    return entries_;
}

void FaultDesk::clear() {
    {
        std::lock_guard const lock(mutex_);
        entries_.clear();
        ++clearings_;
    }
    released_.notify_all();
}

std::optional<FaultRule> FaultDesk::take(std::string_view path, std::span<std::string const> words) {
    std::lock_guard const lock(mutex_);
    for (Entry& entry : entries_) {
        if (entry.left > 0 && meets(entry.rule, path, words)) {
            --entry.left;
            ++entry.met;
            return entry.rule;
        }
    }
    return std::nullopt;
}

bool FaultDesk::hasCommandRules() const {
    std::lock_guard const lock(mutex_);
    return std::any_of(entries_.begin(), entries_.end(),
                       [](Entry const& entry) { return entry.left > 0 && !entry.rule.command.empty(); });
}

void FaultDesk::pause(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    std::uint64_t const before = clearings_;
    (void)released_.wait_for(lock, time, [this, before] { return ended_ || clearings_ != before; });
}

void FaultDesk::end() {
    {
        std::lock_guard const lock(mutex_);
        ended_ = true;
    }
    released_.notify_all();
}

} // namespace tarn7d
