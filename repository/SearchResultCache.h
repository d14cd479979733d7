// Pages of results that were searched before. Bounded: the page that was used longest ago goes first.
//
// Thread: any.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <optional>

#include "repository/SearchRecords.h"

class ZQ_API SearchResultCache {
public:
    enum class Kind : std::uint8_t { search, place };

    // All that an answer depends on.
    struct Key {
        Kind kind = Kind::search;
        WideString text; // the pattern of a search, the path of a place
        std::uint16_t page = 0;
        std::uint16_t pageSize = 0;
        WideString user;
        std::uint64_t connection = 0;  // number of the connection
        std::uint64_t purchases = 0;   // digest of the owned ids, which the price texts show
        std::uint64_t preferences = 0; // revision; another process may change the options
        [[nodiscard]] auto operator<=>(Key const&) const = default;
    };

    // `capacity` is the number of pages that are kept.
    explicit SearchResultCache(std::size_t capacity = 64) : capacity_(capacity) {}

    // Forgets every page, also those whose search is under way now.
    void clear();
    [[nodiscard]] std::optional<SearchResults> find(Key const& key);
    // A number to take before a search and to give to store after it.
    [[nodiscard]] std::uint64_t generation() const;
    // Keeps the page, in place of an older one of that key, unless the cache was cleared since `generation`
    // was taken.
    void store(Key const& key, SearchResults const& results, std::uint64_t generation);
    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] bool empty() const { return size() == 0; }

private:
    struct Page {
        Key key;
        SearchResults results;
    };
    mutable std::mutex mutex_;
    std::size_t capacity_;
    std::uint64_t generation_ = 0;
    std::list<Page> pages_; // the last used in front
    std::map<Key, std::list<Page>::iterator> index_;
};
