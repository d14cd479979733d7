// What the commands of one process share: the repository, the assets that were seen, and the surroundings.
#pragma once

#include <deque>
#include <map>
#include <span>
#include <string>

#include "apps/zq/LineReader.h"
#include "apps/zq/ServiceWatch.h"
#include "apps/zq/terminal/Screen.h"
#include "host/engine/modules/ModuleLoader.h"
#include "repository/MediaFileRepositoryBase.h"

namespace zq {

// Thread: the main thread.
class Session {
public:
    // Borrowed, and alive as long as the session.
    struct Surroundings {
        std::span<engine::ModuleReport const> modules;
        iMediaFileRepository* repository = nullptr; // the chosen one; null where none is loaded
        StatisticsSource statistics;
        AnswerWatch const* answers = nullptr;
        LineReader* input = nullptr;
        Screen screen;
    };

    explicit Session(Surroundings surroundings);

    [[nodiscard]] std::span<engine::ModuleReport const> modules() const { return surroundings_.modules; }
    [[nodiscard]] Screen const& screen() const noexcept { return surroundings_.screen; }
    [[nodiscard]] LineReader& input() const noexcept { return *surroundings_.input; }
    [[nodiscard]] StatisticsSource const& statistics() const noexcept { return surroundings_.statistics; }
    // Looks at the requests that are made from now on.
    [[nodiscard]] ServiceWatch watch() const {
        return ServiceWatch(surroundings_.statistics, *surroundings_.answers);
    }

    // The chosen repository. Throws CommandError where there is none.
    [[nodiscard]] iMediaFileRepository& repository() const;
    // The same with what the base of all repositories adds.
    [[nodiscard]] MediaFileRepositoryBase& base() const;
    // The chosen repository, connected: the first use connects it. Throws CommandError where that fails.
    [[nodiscard]] iMediaFileRepository& connected() const;

    // Searches. Throws CommandError where the page is empty because a request failed.
    [[nodiscard]] SearchResults search(SearchQuery const& query);
    // The asset of that id, from the searches of this process; failing that, from a new search for the id,
    // and else one with nothing but the id. Throws CommandError where the search fails.
    [[nodiscard]] RemoteAsset findAsset(std::string const& id);

private:
    void remember(RemoteAsset const& asset);

    static constexpr std::size_t mostAssets = 10'000;

    Surroundings surroundings_;
    std::map<WideString, RemoteAsset> assets_; // seen in searches, by id
    std::deque<WideString> order_;             // their ids, the oldest in front
};

} // namespace zq
