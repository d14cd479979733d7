// One repository of a panel: a thread of its own that makes all calls, one at a time, and what other threads
// may know of its clips.
#pragma once

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include "apps/zq/Session.h"
#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/GivenLinks.h"

namespace zq::panel {

// What is needed of a clip without asking the repository. A value.
struct KnownClip {
    RemoteAsset asset;
    WideString thumbnailAddress; // empty: none
    WideString thumbnailPath;    // a file of this machine, where there is no address; empty: none
    WideString previewPath;      // virtual path; empty: none
};

class RepositoryDesk {
public:
    // Made by the main thread; the surroundings, the events and the links outlive it. The surroundings'
    // statistics are those of the calling thread (CurlNetwork::statisticsOfThisThread): what runs beside the
    // desk must not pass for a failure of its own. The events "options" and "repository" come from here; the
    // links are those of the repository's description.
    RepositoryDesk(Session::Surroundings surroundings, EventHub& events, GivenLinks& links);
    // end()
    ~RepositoryDesk();
    RepositoryDesk(RepositoryDesk const&) = delete;
    RepositoryDesk& operator=(RepositoryDesk const&) = delete;

    // Cancels what runs, drops what waits and what comes, and waits for the thread. Thread: any but the
    // desk's.
    void end();

    [[nodiscard]] std::string const& shortName() const noexcept;
    // The repository as JSON, as it was after the last piece of work. Thread: any.
    [[nodiscard]] std::string description() const;

    // Runs the work on the desk's thread behind what waits there, waits for its end, and gives its result or
    // throws what it threw. Not from the desk's own thread. Throws ApiError(conflict) when the desk ends or
    // the work was cancelled. Thread: any.
    template <class Work>
    auto ask(Work&& work) {
        using Result = decltype(work(std::declval<Session&>()));
        auto task = std::make_shared<std::packaged_task<Result(Session&)>>(
            [this, own = std::forward<Work>(work)](Session& session) mutable -> Result {
                Changes const changes(*this);
                return own(session);
            });
        std::future<Result> result = task->get_future();
        // The desk alone holds the task, so that one which is dropped ends the wait.
        enqueue([held = std::move(task)](Session& session) { (*held)(session); });
        return waitFor(std::move(result));
    }
    // The same without waiting; what it throws goes to the log. Thread: any.
    void post(std::function<void(Session&)> work);

    // Cancels the searches that run or wait, as newer ones are wanted. Thread: any.
    void cancelSearch();
    // The search of `query`; its clips are known from then on. Cancels those for other words, and older ones
    // for the same page. What was found is shown to `whenFound` on the desk's thread, before this returns.
    // Throws as ask, ApiError(conflict) when cancelled.
    using WhenFound = std::function<void(Session& session, SearchResults const& found)>;
    SearchResults search(SearchQuery const& query, WhenFound whenFound = {});

    // Clips that a search, the owned list or a look-up has shown: the 10,000 used last. Thread: any.
    [[nodiscard]] std::optional<KnownClip> knownClip(std::string const& id) const;
    // Thread: the desk's.
    void remember(Session& session, RemoteAsset const& asset);

    // What the account owns, as Session::ownedAssets; its clips are known from then on, and owns() follows
    // it. Thread: the desk's.
    [[nodiscard]] LightweightVector<RemoteAsset> readOwned(Session& session);
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

    void enqueue(std::function<void(Session&)> work);
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
