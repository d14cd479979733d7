#include "apps/zq/panel/RepositoryDesk.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/Reply.h"
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

std::string optionsEvent(std::string const& shortName, bool results) {
    JSON::Builder json;
    json.startChild(nullptr);
    json.add("repository", wide(shortName), true);
    json.add("results", results);
    json.endChild();
    return utf8(json.getOutput());
}

// An option's id is not unique, its legend is in the language of the user: the place makes it one.
std::string optionName(std::size_t group, std::size_t index, GenericParam::iParam const& option) {
    return std::to_string(group) + "/" + std::to_string(index) + "/" + std::string(option.getID().view());
}

// Hears that results are to be asked for again, on whichever thread the repository tells it.
class OptionsListener final : public iMediaFileRepository::Listener {
public:
    OptionsListener(EventHub& events, std::string const& shortName)
        : events_(events), data_(optionsEvent(shortName, true)) {}

    [[nodiscard]] std::uint64_t count() const noexcept { return count_; }

    int operator()(NotifyMsg message) override {
        try {
            if (message.getCode() == iMediaFileRepository::eSearchOptionsChanged) {
                ++count_;
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
    std::atomic<std::uint64_t> count_{0};
};

WideString thumbnailPathOf(Session& session, RemoteAsset const& asset) {
    return session.base().describeLocalMediaLocation(asset, MediaFileRepositoryBase::eThumbnail);
}

} // namespace

class RepositoryDesk::Implementation {
public:
    // What tells one search from another.
    struct Search {
        SearchTurn turn;
        WideString words;
        std::uint16_t page = 0;

        [[nodiscard]] bool replaces(Search const& older) const {
            return older.turn.asker == turn.asker &&
                   (older.turn.number < turn.number ||
                    (older.turn.number == turn.number && (older.words != words || older.page == page)));
        }
    };

    Implementation(Session::Surroundings surroundings, EventHub& hub, GivenLinks& givenLinks,
                   PanelMemory& panelMemory)
        : events(hub), links(givenLinks), memory(panelMemory), session(std::move(surroundings)),
          shortName(utf8(session.shortName())),
          optionsListener(Zq::makeShared<OptionsListener>(events, shortName)),
          description_(repositoryJson(session, links)),
          connection_(session.repository().getDescription().connection),
          listening_(session.repository().addListener(optionsListener)), thread_([this] { run(); }) {}

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

    // False where the work is not wanted, which is dropped then.
    bool enqueue(Turn turn, std::function<void(Session&)> work, std::optional<Search> search = {}) {
        std::deque<Piece> dropped;
        {
            std::lock_guard const lock(mutex_);
            if (ended_) {
                return false;
            }
            if (search) {
                if (isOvertaken(*search)) {
                    return false;
                }
                dropped = dropSearches([&](Search const& older) { return search->replaces(older); });
            }
            auto const place = turn == Turn::inOrder
                                   ? waiting_.end()
                                   : std::ranges::find(waiting_, Turn::inOrder, &Piece::turn);
            waiting_.insert(
                place, {turn, std::move(work), std::make_shared<engine::TaskState>(), std::move(search)});
        }
        wake_.notify_all();
        return true;
    }

    // For whoever will wait for the end of a piece.
    void refuseOwnThread() const {
        if (std::this_thread::get_id() == threadId_) {
            throw std::logic_error("the desk's own thread cannot wait for it");
        }
    }

    void cancelSearches(SearchTurn const& last) {
        std::deque<Piece> dropped;
        std::lock_guard const lock(mutex_);
        dropped = dropSearches([&](Search const& one) {
            return one.turn.asker == last.asker && one.turn.number <= last.number;
        });
    }

    void tellChanges() {
        std::string const user = session.user();
        if (user != user_) {
            owned.clear();
            user_ = user;
        }
        std::string now = repositoryJson(session, links);
        HTTPConnectionInfo connection = session.repository().getDescription().connection;
        bool const changed = now != description_ || owned != toldOwned_;
        toldOwned_ = owned;
        {
            std::lock_guard const lock(mutex_);
            connection_ = std::move(connection);
            description_ = now;
        }
        if (changed) {
            events.send("repository", withWords(std::move(now)));
        }
    }

    [[nodiscard]] std::string description() {
        std::unique_lock lock(mutex_);
        std::string now = description_;
        lock.unlock();
        return withWords(std::move(now));
    }

    [[nodiscard]] HTTPConnectionInfo connection() {
        std::lock_guard const lock(mutex_);
        return connection_;
    }

    EventHub& events;
    GivenLinks& links;
    PanelMemory& memory;
    Session session; // the thread's, once that runs
    std::string const shortName;
    Zq::Ptr<OptionsListener> const optionsListener;
    KnownClips clips;
    std::set<WideString> owned; // the thread's

private:
    struct Piece {
        Turn turn = Turn::inOrder;
        std::function<void(Session&)> work;
        std::shared_ptr<engine::TaskState> state;
        std::optional<Search> search;
    };

    // New words alone are no change that pages are told of: whoever has typed them knows them.
    [[nodiscard]] std::string withWords(std::string repository) const {
        repository.pop_back();
        return repository + ",\"words\":" + utf8(quoted(wide(memory.words(shortName)))) + "}";
    }

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

    [[nodiscard]] bool isOvertaken(Search const& search) const {
        auto const isLater = [&](Piece const& piece) {
            return piece.search && piece.search->turn.asker == search.turn.asker &&
                   piece.search->turn.number > search.turn.number;
        };
        return (running_ && isLater(*running_)) || std::ranges::any_of(waiting_, isLater);
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
    HTTPConnectionInfo connection_;
    std::deque<Piece> waiting_;
    std::optional<Piece> running_; // its work has been taken out
    bool ended_ = false;
    std::condition_variable wake_;

    Zq::Ptr<Zq::Guard> listening_;
    std::mutex joining_;
    std::thread thread_;
    std::thread::id const threadId_{thread_.get_id()};
};

RepositoryDesk::RepositoryDesk(Session::Surroundings surroundings, EventHub& events, GivenLinks& links,
                               PanelMemory& memory)
    : implementation_(std::make_unique<Implementation>(std::move(surroundings), events, links, memory)) {}

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

HTTPConnectionInfo RepositoryDesk::connection() const {
    return implementation_->connection();
}

void RepositoryDesk::enqueue(Turn turn, std::function<void(Session&)> work) {
    implementation_->refuseOwnThread();
    implementation_->enqueue(turn, std::move(work));
}

void RepositoryDesk::post(std::function<void(Session&)> work, Turn turn) {
    implementation_->enqueue(turn, [this, own = std::move(work)](Session& session) {
        Changes const changes(*this);
        own(session);
    });
}

void RepositoryDesk::cancelSearch(SearchTurn const& last) {
    implementation_->cancelSearches(last);
}

SearchResults RepositoryDesk::search(SearchTurn const& turn, SearchQuery const& query, WhenFound whenFound) {
    implementation_->refuseOwnThread();
    auto task = std::make_shared<std::packaged_task<SearchResults(Session&)>>([this, query,
                                                                               whenFound](Session& session) {
        Changes const changes(*this);
        auto const stopIfUnwanted = [] {
            if (engine::isTaskCancelled()) {
                throw ApiError(ErrorCode::conflict, "the search is not wanted any more", Reason::superseded);
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
    bool const isWanted = implementation_->enqueue(
        Turn::inOrder, [held = std::move(task)](Session& session) { (*held)(session); },
        Implementation::Search{turn, query.words, query.page});
    if (isWanted) {
        implementation_->memory.setWords(shortName(), utf8(query.words));
    }
    return waitFor(std::move(result));
}

std::optional<KnownClip> RepositoryDesk::knownClip(std::string const& id) const {
    return implementation_->clips.find(id);
}

KnownClip RepositoryDesk::describe(Session& session, RemoteAsset const& asset) {
    KnownClip clip;
    clip.asset = asset;
    clip.thumbnailAddress = session.base().describeRemoteLocation(asset, MediaFileRepositoryBase::eThumbnail);
    if (clip.thumbnailAddress.isEmpty()) {
        clip.thumbnailPath = thumbnailPathOf(session, asset);
    }
    clip.previewPath = asset.proxyLocation;
    return clip;
}

void RepositoryDesk::remember(Session& session, RemoteAsset const& asset) {
    implementation_->clips.remember(utf8(asset.id), describe(session, asset));
}

SearchOptionResult RepositoryDesk::setOption(Session& session, std::size_t group, std::size_t index,
                                             WideString const& value) {
    LightweightVector<SearchOptionGroup> const groups = readOptions(session);
    Zq::Ptr<GenericParam::iParam> const option = findSearchOption(groups, group, index);
    WideString const before = option ? option->getValueAsString() : WideString();
    std::uint64_t const newsBefore = implementation_->optionsListener->count();
    SearchOptionResult const result = setSearchOption(groups, group, index, value);
    if (result != SearchOptionResult::set) {
        return result;
    }
    bool const isFilter = implementation_->optionsListener->count() != newsBefore;
    if (option->getValueType() == "bool" && option->getValueAsString() != before) {
        implementation_->memory.setIsFilter(shortName(), optionName(group, index, *option), isFilter);
    }
    if (!isFilter) {
        implementation_->events.send("options", optionsEvent(shortName(), false));
    }
    return result;
}

bool RepositoryDesk::isFilter(std::size_t group, std::size_t index,
                              GenericParam::iParam const& option) const {
    return implementation_->memory.isFilter(shortName(), optionName(group, index, option)).value_or(false);
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

void RepositoryDesk::countAsOwned(std::vector<std::string> const& ids) {
    for (std::string const& id : ids) {
        implementation_->owned.insert(wide(id));
    }
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
    throw ApiError(ErrorCode::conflict, "the work was cancelled", Reason::cancelled);
}

} // namespace zq::panel
