// Why the bytes of previews do not come, as it was told last.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "apps/zq/Reason.h"

namespace zq::panel {

// A browser reads one preview by several requests, and drops them as it likes: what one has met another one
// finds mended. So what is known belongs to the clip.
//
// Thread: any.
class PreviewTroubles {
public:
    // True where the clip's pages have not been told so yet; they count as told then.
    [[nodiscard]] bool isNews(std::string const& repository, std::string const& clip, Reason reason) {
        std::lock_guard const lock(mutex_);
        std::pair const key{repository, clip};
        auto const told = told_.find(key);
        if (reason == (told == told_.end() ? Reason::none : told->second)) {
            return false;
        }
        if (reason == Reason::none) {
            told_.erase(told);
        } else {
            told_[key] = reason;
        }
        return true;
    }

private:
    std::mutex mutex_;
    std::map<std::pair<std::string, std::string>, Reason> told_; // of clips that have a trouble
};

} // namespace zq::panel
