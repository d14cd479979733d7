#include "repository/SearchResultCache.h"

void SearchResultCache::clear() {
    std::list<Page> forgotten; // ends outside the lock, as do the payloads of its assets
    std::lock_guard const lock(mutex_);
    ++generation_;
    index_.clear();
    forgotten.swap(pages_);
}

std::optional<SearchResults> SearchResultCache::find(Key const& key) {
    std::lock_guard const lock(mutex_);
    auto const found = index_.find(key);
    if (found == index_.end()) {
        return std::nullopt;
    }
    pages_.splice(pages_.begin(), pages_, found->second);
    return found->second->results;
}

std::uint64_t SearchResultCache::generation() const {
    std::lock_guard const lock(mutex_);
    return generation_;
}

void SearchResultCache::store(Key const& key, SearchResults const& results, std::uint64_t generation) {
    std::list<Page> made{Page{key, results}};
    std::list<Page> dropped;
    std::lock_guard const lock(mutex_);
    if (generation != generation_ || capacity_ == 0) {
        return;
    }
    auto const [place, isNew] = index_.try_emplace(key, made.begin());
    if (!isNew) {
        dropped.splice(dropped.begin(), pages_, place->second);
        place->second = made.begin();
    }
    pages_.splice(pages_.begin(), made);
    if (pages_.size() > capacity_) {
        index_.erase(pages_.back().key);
        dropped.splice(dropped.begin(), pages_, std::prev(pages_.end()));
    }
}

std::size_t SearchResultCache::size() const {
    std::lock_guard const lock(mutex_);
    return pages_.size();
}
