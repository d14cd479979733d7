#include "apps/zq/panel/RepositoryDesk.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>

#include "apps/zq/Reply.h"
#include "apps/zq/Text.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/KnownClips.h"
#include "apps/zq/panel/RepositoryJson.h"
#include "host/engine/os/BrowserUrl.h"
#include "host/engine/os/TaskContext.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/log/Log.h"
#include "host/modules/ModuleThreads.h"

namespace zq::panel {

namespace {

std::string optionsEvent(std::string const& shortName) {
    JSON::Builder json;
    json.startChild(nullptr);
    json.add("repository", wide(shortName), true);
    json.endChild();
    return utf8(json.getOutput());
}

// Hears that results are to be asked for again, on whichever thread the repository tells it.
class OptionsListener final : public iMediaFileRepository::Listener {
public:
    OptionsListener(EventHub& events, std::string const& shortName)
        : events_(events), data_(optionsEvent(shortName)) {}

    int operator()(NotifyMsg message) override {
        try {
            if (message.getCode() == iMediaFileRepository::eSearchOptionsChanged) {
                events_.send("options", data_);
            }
        } catch (std::exception const& failure) {
            Log("The pages were not told of changed options: %s", failure.what());
        }
        return 0;
    }

private:
    EventHub& events_;
    std::string const data_;
};

WideString thumbnailPathOf(Session& session, RemoteAsset const& asset) {
    return session.base().describeLocalMediaLocation(asset, MediaFileRepositoryBase::eThumbnail);
}

} // namespace

class RepositoryDesk::Implementation {
public:
    Implementation(Session::Surroundings surroundings, EventHub& hub, GivenLinks& givenLinks)
        : events(hub), links(givenLinks), session(std::move(surroundings)),
          shortName(utf8(session.shortName())), description_(repositoryJson(session, links)),
          listening_(session.repository().addListener(Zq::makeShared<OptionsListener>(events, shortName))),
          thread_([this] { run(); }) {}

    void end() {
        std::deque<Piece> dropped;
        {
            std::lock_guard const lock(mutex_);
            ended_ = true;
            dropped.swap(waiting_);
            if (running_) {
                running_->state->cancel();
            }
        }
        wake_.notify_all();
        dropped.clear(); // whoever waits for one of these goes on
        std::lock_guard const lock(joining_);
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    void enqueue(std::function<void(Session&)> work, std::optional<SearchQuery> search = {}) {
        std::deque<Piece> dropped;
        {
            std::lock_guard const lock(mutex_);
            if (ended_) {
                return;
            }
            if (search) {
                dropped = dropSearches([&](SearchQuery const& older) {
                    return older.words != search->words || older.page == search->page;
                });
            }
            waiting_.push_back({std::move(work), std::make_shared<engine::TaskState>(), std::move(search)});
        }
        wake_.notify_all();
    }

    // For whoever will wait for the end of a piece.
    void refuseOwnThread() const {
        if (std::this_thread::get_id() == threadId_) {
            throw std::logic_error("the desk's own thread cannot wait for it");
        }
    }

    void cancelSearches() {
        std::deque<Piece> dropped;
        std::lock_guard const lock(mutex_);
        dropped = dropSearches([](SearchQuery const&) { return true; });
    }

    void tellChanges() {
        std::string const user = session.user();
        if (user != user_) {
            owned.clear();
            user_ = user;
        }
        std::string now = repositoryJson(session, links);
        bool const changed = now != description_ || owned != toldOwned_;
        toldOwned_ = owned;
        if (changed) {
            {
                std::lock_guard const lock(mutex_);
                description_ = now;
            }
            events.send("repository", std::move(now));
        }
    }

    [[nodiscard]] std::string description() {
        std::lock_guard const lock(mutex_);
        return description_;
    }

    EventHub& events;
    GivenLinks& links;
    Session session; // the thread's, once that runs
    std::string const shortName;
    KnownClips clips;
    std::set<WideString> owned; // the thread's

private:
    struct Piece {
        std::function<void(Session&)> work;
        std::shared_ptr<engine::TaskState> state;
        std::optional<SearchQuery> search;
    };

    void run() {
        Zq::ThreadAttachment const attachment;
        for (;;) {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return ended_ || !waiting_.empty(); });
            if (ended_) {
                return;
            }
            running_ = std::move(waiting_.front());
            waiting_.pop_front();
            std::shared_ptr<engine::TaskState> const state = running_->state;
            std::function<void(Session&)> work = std::move(running_->work);
            lock.unlock();
            {
                engine::ScopedTask const task(*state);
                try {
                    work(session);
                } catch (std::exception const& failure) {
                    Log("Work for a repository ended: %s", failure.what());
                }
            }
            work = nullptr;
            lock.lock();
            running_.reset();
        }
    }

    // The pieces end without the lock, and with them the wait of whoever asked.
    template <class Condition>
    std::deque<Piece> dropSearches(Condition const& unwanted) {
        std::deque<Piece> dropped;
        for (auto piece = waiting_.begin(); piece != waiting_.end();) {
            if (piece->search && unwanted(*piece->search)) {
                dropped.push_back(std::move(*piece));
                piece = waiting_.erase(piece);
            } else {
                ++piece;
            }
        }
        if (running_ && running_->search && unwanted(*running_->search)) {
            running_->state->cancel();
        }
        return dropped;
    }

    std::string user_;
    std::set<WideString> toldOwned_; // the thread's, both

    std::mutex mutex_; // guards what follows up to the wake
    std::string description_;
    std::deque<Piece> waiting_;
    std::optional<Piece> running_; // its work has been taken out
    bool ended_ = false;
    std::condition_variable wake_;

    Zq::Ptr<Zq::Guard> listening_;
    std::mutex joining_;
    std::thread thread_;
    std::thread::id const threadId_{thread_.get_id()};
};

RepositoryDesk::RepositoryDesk(Session::Surroundings surroundings, EventHub& events, GivenLinks& links)
    : implementation_(std::make_unique<Implementation>(std::move(surroundings), events, links)) {}

RepositoryDesk::~RepositoryDesk() {
    end();
}

void RepositoryDesk::end() {
    implementation_->end();
}

std::string const& RepositoryDesk::shortName() const noexcept {
    return implementation_->shortName;
}

std::string RepositoryDesk::description() const {
    return implementation_->description();
}

void RepositoryDesk::enqueue(std::function<void(Session&)> work) {
    implementation_->refuseOwnThread();
    implementation_->enqueue(std::move(work));
}

void RepositoryDesk::post(std::function<void(Session&)> work) {
    implementation_->enqueue([this, own = std::move(work)](Session& session) {
        Changes const changes(*this);
        own(session);
    });
}

void RepositoryDesk::cancelSearch() {
    implementation_->cancelSearches();
}

SearchResults RepositoryDesk::search(SearchQuery const& query, WhenFound whenFound) {
    implementation_->refuseOwnThread();
    auto task = std::make_shared<std::packaged_task<SearchResults(Session&)>>(
        [this, query, whenFound](Session& session) {
            Changes const changes(*this);
            auto const stopIfUnwanted = [] {
                if (engine::isTaskCancelled()) {
                    throw ApiError(ErrorCode::conflict, "the search is not wanted any more");
                }
            };
            SearchResults results;
            try {
                results = session.search(query);
            } catch (CommandError const&) {
                stopIfUnwanted();
                throw;
            }
            stopIfUnwanted();
            for (RemoteAsset const& asset : results.assets) {
                remember(session, asset);
            }
            if (whenFound) {
                whenFound(session, results);
            }
            return results;
        });
    std::future<SearchResults> result = task->get_future();
    implementation_->enqueue([held = std::move(task)](Session& session) { (*held)(session); }, query);
    return waitFor(std::move(result));
}

std::optional<KnownClip> RepositoryDesk::knownClip(std::string const& id) const {
    return implementation_->clips.find(id);
}

void RepositoryDesk::remember(Session& session, RemoteAsset const& asset) {
    KnownClip clip;
    clip.asset = asset;
    clip.thumbnailAddress = session.base().describeRemoteLocation(asset, MediaFileRepositoryBase::eThumbnail);
    if (clip.thumbnailAddress.isEmpty()) {
        clip.thumbnailPath = thumbnailPathOf(session, asset);
    }
    clip.previewPath = asset.proxyLocation;
    implementation_->clips.remember(utf8(asset.id), std::move(clip));
}

LightweightVector<RemoteAsset> RepositoryDesk::readOwned(Session& session) {
    LightweightVector<RemoteAsset> all = session.ownedAssets();
    std::set<WideString> owned;
    for (RemoteAsset const& asset : all) {
        owned.insert(asset.id);
        remember(session, asset);
    }
    implementation_->owned = std::move(owned);
    return all;
}

bool RepositoryDesk::owns(Session& session, RemoteAsset const& asset) const {
    return !session.needsSignIn() || session.base().isPurchased(asset) ||
           implementation_->owned.contains(asset.id);
}

void RepositoryDesk::tellChanges() noexcept {
    try {
        implementation_->tellChanges();
    } catch (std::exception const& failure) {
        Log("The pages were not told of a repository's changes: %s", failure.what());
    }
}

void RepositoryDesk::throwDropped() {
    throw ApiError(ErrorCode::conflict, "the work was cancelled");
}

} // namespace zq::panel
