#include "apps/zq/panel/KnownClips.h"

#include <utility>

namespace zq::panel {

void KnownClips::remember(std::string const& id, KnownClip clip) {
    std::lock_guard const lock(mutex_);
    if (auto const found = byId_.find(id); found != byId_.end()) {
        found->second->clip = std::move(clip);
        entries_.splice(entries_.begin(), entries_, found->second);
        return;
    }
    entries_.push_front({id, std::move(clip)});
    byId_[id] = entries_.begin();
    if (entries_.size() > most) {
        byId_.erase(entries_.back().id);
        entries_.pop_back();
    }
}

std::optional<KnownClip> KnownClips::find(std::string const& id) {
    std::lock_guard const lock(mutex_);
    auto const found = byId_.find(id);
    if (found == byId_.end()) {
        return std::nullopt;
    }
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->clip;
}

std::size_t KnownClips::size() const {
    std::lock_guard const lock(mutex_);
    return entries_.size();
}

} // namespace zq::panel
