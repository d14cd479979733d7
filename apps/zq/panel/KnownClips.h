// The clips that a repository has shown, by their ids: the ones used last.
#pragma once

#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "apps/zq/panel/RepositoryDesk.h"

namespace zq::panel {

// Thread: any.
class KnownClips {
public:
    static constexpr std::size_t most = 10'000;

    void remember(std::string const& id, KnownClip clip);
    [[nodiscard]] std::optional<KnownClip> find(std::string const& id);
    [[nodiscard]] std::size_t size() const;

private:
    struct Entry {
        std::string id;
        KnownClip clip;
    };
    mutable std::mutex mutex_;
    std::list<Entry> entries_; // the one used last in front
    std::map<std::string, std::list<Entry>::iterator> byId_;
};

} // namespace zq::panel
