// What the commands of one process share: the repository, the assets that were seen, and the surroundings.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "apps/zq/FetchJob.h"
#include "apps/zq/LineReader.h"
#include "apps/zq/LiveOutput.h"
#include "apps/zq/ServiceWatch.h"
#include "apps/zq/terminal/Screen.h"
#include "host/engine/Engine.h"
#include "host/engine/modules/ModuleLoader.h"
#include "repository/MediaFileRepositoryBase.h"

namespace zq {

// True for decimal digits, which a clip's number is made of.
[[nodiscard]] bool isClipNumber(std::string_view text);
// Throws CommandError for a word that is no clip's number.
void requireClipNumber(std::string const& word);

// Thread: the main thread.
class Session {
public:
    // Borrowed, and alive as long as the session.
    struct Surroundings {
        std::span<engine::ModuleReport const> modules;
        iMediaFileRepository* repository = nullptr; // the chosen one; null where none is loaded
        StatisticsSource statistics;
        AnswerWatch* answers = nullptr;
        LineReader* input = nullptr;
        LiveOutput* live = nullptr;
        engine::Engine* engine = nullptr;
        bool isShell = false; // further commands come in this process
        Screen screen;
    };

    explicit Session(Surroundings surroundings);

    [[nodiscard]] std::span<engine::ModuleReport const> modules() const { return surroundings_.modules; }
    [[nodiscard]] Screen const& screen() const noexcept { return surroundings_.screen; }
    [[nodiscard]] LineReader& input() const noexcept { return *surroundings_.input; }
    [[nodiscard]] StatisticsSource const& statistics() const noexcept { return surroundings_.statistics; }
    [[nodiscard]] LiveOutput& live() const noexcept { return *surroundings_.live; }
    [[nodiscard]] engine::Engine& engine() const noexcept { return *surroundings_.engine; }
    [[nodiscard]] bool isShell() const noexcept { return surroundings_.isShell; }
    // The project, for changing it. Throws CommandError where another process holds it.
    [[nodiscard]] engine::Project& writableProject() const;
    // Ends the fetches that run: a sign-in or a sign-out must not meet one.
    void endFetches() { fetches_.cancelAll(engine().tasks()); }
    [[nodiscard]] FetchList& fetches() noexcept { return fetches_; }
    // Looks at the requests that are made from now on.
    [[nodiscard]] ServiceWatch watch() const {
        return ServiceWatch(surroundings_.statistics, *surroundings_.answers);
    }

    // The chosen repository. Throws CommandError where there is none.
    [[nodiscard]] iMediaFileRepository& repository() const;
    // Its short name; empty where there is none.
    [[nodiscard]] WideString shortName() const;
    // The same with what the base of all repositories adds.
    [[nodiscard]] MediaFileRepositoryBase& base() const;
    // The chosen repository, connected: the first use connects it. Throws CommandError where that fails.
    [[nodiscard]] iMediaFileRepository& connected() const;
    // False for a repository that knows no accounts: it has no form to sign in with, everybody may have all
    // of it, and it sells nothing.
    [[nodiscard]] bool needsSignIn() const { return !repository().getLoginForm().isEmpty(); }
    // Name of the user; empty where nobody is signed in.
    [[nodiscard]] std::string user() const;
    // What is left on the user's account; nothing where the service has not told yet.
    [[nodiscard]] std::optional<std::int64_t> credits() const;
    // The next answers are for another account, or for none.
    void forgetCredits() { surroundings_.answers->forgetCredits(); }
    // The chosen repository, with somebody signed in where it needs that. Throws CommandError where nobody
    // is.
    [[nodiscard]] iMediaFileRepository& signedIn() const;

    // Searches. Throws CommandError where the page is empty because a request failed.
    [[nodiscard]] SearchResults search(SearchQuery const& query);
    // The asset of that id, from the searches of this process; failing that, from a new search for the id,
    // and else one with nothing but the id. Throws CommandError where the search fails.
    [[nodiscard]] RemoteAsset findAsset(std::string const& id);
    // The same as the service tells it. Throws CommandError where the service has no such clip.
    [[nodiscard]] RemoteAsset knownAsset(std::string const& id);
    // What the account owns, in the service's order; of a repository without accounts, all that it gives
    // away. Throws CommandError where a sign-in is needed and missing or the service does not answer.
    [[nodiscard]] LightweightVector<RemoteAsset> ownedAssets() const;

private:
    void remember(RemoteAsset const& asset);

    static constexpr std::size_t mostAssets = 10'000;

    Surroundings surroundings_;
    std::map<WideString, RemoteAsset> assets_; // seen in searches, by id
    std::deque<WideString> order_;             // their ids, the oldest in front
    FetchList fetches_;
};

} // namespace zq
