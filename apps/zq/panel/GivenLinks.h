// The links that repositories have given in this run: only those lead out of the panel.
#pragma once

#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace zq::panel {

// Whoever tells the page a link of a repository (its description, a form, rich text, a payment page)
// remembers it here. Thread: any.
class GivenLinks {
public:
    static constexpr std::size_t most = 10'000; // beyond, no further one is taken

    void remember(std::string_view url) {
        std::lock_guard const lock(mutex_);
        if (!url.empty() && links_.size() < most) {
            links_.emplace(url);
        }
    }
    [[nodiscard]] bool contains(std::string_view url) const {
        std::lock_guard const lock(mutex_);
        return links_.contains(url);
    }

private:
    mutable std::mutex mutex_;
    std::set<std::string, std::less<>> links_;
};

} // namespace zq::panel
