// One repository of a panel: a thread of its own that makes all calls, one at a time, and what other threads
// may know of its clips.
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/zq/Session.h"
#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/GivenLinks.h"
#include "apps/zq/panel/PanelMemory.h"
#include "repository/SearchOptions.h"

namespace zq::panel {

// What is needed of a clip without asking the repository. A value.
struct KnownClip {
    RemoteAsset asset;
    WideString thumbnailAddress; // empty: none
    WideString thumbnailPath;    // a file of this machine, where there is no address; empty: none
    WideString previewPath;      // virtual path; empty: none
};

// When a piece of work is done.
enum class Turn {
    inOrder,        // behind all that waits
    beforeSearches, // for what asks the service nothing: behind its like, before all that may ask
};

class RepositoryDesk {
public:
    // Made by the main thread; the surroundings, the events, the links and the memory outlive it. The
    // surroundings' statistics are those of the calling thread (CurlNetwork::statisticsOfThisThread): what
    // runs beside the desk must not pass for a failure of its own. The events "options" and "repository" come
    // from here; the links are those of the repository's description.
    RepositoryDesk(Session::Surroundings surroundings, EventHub& events, GivenLinks& links,
                   PanelMemory& memory);
    // end()
    ~RepositoryDesk();
    RepositoryDesk(RepositoryDesk const&) = delete;
    RepositoryDesk& operator=(RepositoryDesk const&) = delete;

    // Cancels what runs, drops what waits and what comes, and waits for the thread. Thread: any but the
    // desk's.
    void end();

    [[nodiscard]] std::string const& shortName() const noexcept;
    // The repository as JSON, as it was after the last piece of work, with the words of the last search.
    // Thread: any.
    [[nodiscard]] std::string description() const;

    // How its server is reached, as it was after the last piece of work. Thread: any.
    [[nodiscard]] HTTPConnectionInfo connection() const;

    // Runs the work on the desk's thread when its turn comes, waits for its end, and gives its result or
    // throws what it threw. A repository answers one call at a time: what runs is waited for in any case. Not
    // from the desk's own thread. Throws ApiError(conflict) when the desk ends or the work was cancelled.
    // Thread: any.
    template <class Work>
    auto ask(Work&& work) {
        return ask(Turn::inOrder, std::forward<Work>(work));
    }
    template <class Work>
    auto ask(Turn turn, Work&& work) {
        using Result = decltype(work(std::declval<Session&>()));
        auto task = std::make_shared<std::packaged_task<Result(Session&)>>(
            [this, own = std::forward<Work>(work)](Session& session) mutable -> Result {
                Changes const changes(*this);
                return own(session);
            });
        std::future<Result> result = task->get_future();
        // The desk alone holds the task, so that one which is dropped ends the wait.
        enqueue(turn, [held = std::move(task)](Session& session) { (*held)(session); });
        return waitFor(std::move(result));
    }
    // The same without waiting; what it throws goes to the log. Thread: any.
    void post(std::function<void(Session&)> work, Turn turn = Turn::inOrder);

    // Which of an asker's searches; requests for several pages of it may share one.
    struct SearchTurn {
        std::string asker;
        std::uint32_t number = 0; // rises with each search
    };
    // Cancels the searches of that asker up to that number that run or wait. Thread: any.
    void cancelSearch(SearchTurn const& last);
    // The search of `query`; its clips are known from then on, and its words are remembered. Cancels the
    // asker's own of lower numbers, and of the same number those for other words or for the same page; gives
    // way itself to one of a higher number that runs or waits, since requests may arrive in another order
    // than they were made in. What was found is shown to `whenFound` on the desk's thread, before this
    // returns. Throws as ask, ApiError(conflict) when cancelled.
    using WhenFound = std::function<void(Session& session, SearchResults const& found)>;
    SearchResults search(SearchTurn const& turn, SearchQuery const& query, WhenFound whenFound = {});

    // Clips that a search, the owned list or a look-up has shown: the 10,000 used last. Thread: any.
    [[nodiscard]] std::optional<KnownClip> knownClip(std::string const& id) const;
    // Thread: the desk's, both.
    void remember(Session& session, RemoteAsset const& asset);
    [[nodiscard]] static KnownClip describe(Session& session, RemoteAsset const& asset);

    // Sets a search option, as ::setSearchOption does, and tells the pages of it, also where no results
    // depend on it. Of a boolean it is remembered whether they do: whether the repository then says that they
    // are to be asked for again. Thread: the desk's.
    [[nodiscard]] SearchOptionResult setOption(Session& session, std::size_t group, std::size_t index,
                                               WideString const& value);
    // Whether results are known to depend on that boolean. Thread: any.
    [[nodiscard]] bool isFilter(std::size_t group, std::size_t index,
                                GenericParam::iParam const& option) const;

    // What the account owns, as Session::ownedAssets; its clips are known from then on, and owns() follows
    // it. Thread: the desk's.
    [[nodiscard]] LightweightVector<RemoteAsset> readOwned(Session& session);
    // These are owned too, until the list is read anew. Thread: the desk's.
    void countAsOwned(std::vector<std::string> const& ids);
    // True for a clip that the account owns as far as is known: a list that could not be read takes nothing
    // away. Thread: the desk's.
    [[nodiscard]] bool owns(Session& session, RemoteAsset const& asset) const;

private:
    // Tells the pages of what a piece of work has changed, before its result is given.
    class Changes {
    public:
        explicit Changes(RepositoryDesk& desk) : desk_(desk) {}
        ~Changes() { desk_.tellChanges(); }
        Changes(Changes const&) = delete;
        Changes& operator=(Changes const&) = delete;

    private:
        RepositoryDesk& desk_;
    };

    void enqueue(Turn turn, std::function<void(Session&)> work);
    void tellChanges() noexcept;
    [[noreturn]] static void throwDropped();

    template <class Result>
    static Result waitFor(std::future<Result> result) {
        try {
            return result.get();
        } catch (std::future_error const&) {
            throwDropped();
        }
    }

    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace zq::panel
