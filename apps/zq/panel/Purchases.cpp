#include "apps/zq/panel/Purchases.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ApiError.h"
#include "host/engine/Engine.h"
#include "host/engine/os/DesktopShell.h"
#include "host/log/Log.h"

namespace zq::panel {

namespace {

using std::chrono::seconds;

// When the list of what is owned is asked for, from the purchase on.
constexpr seconds firstLooks[] = {seconds(2), seconds(4), seconds(8), seconds(16)};
constexpr seconds laterLooks{30};
constexpr seconds watched = std::chrono::minutes(30);

enum class State { running, done, waiting, doubtful, refused };

char const* wordFor(State state) {
    switch (state) {
    case State::running:
        return "running";
    case State::done:
        return "done";
    case State::waiting:
        return "waiting";
    case State::doubtful:
        return "doubtful";
    case State::refused:
        break;
    }
    return "refused";
}

} // namespace

class Purchases::Record {
public:
    Record(RepositoryDesk& itsDesk, Order itsOrder) : desk(&itsDesk), order(std::move(itsOrder)) {}

    [[nodiscard]] bool isOpen() const { return state == State::waiting || state == State::doubtful; }
    [[nodiscard]] bool isSettled() const { return state == State::done || state == State::refused; }
    [[nodiscard]] bool blocks(std::set<std::string> const& clips) const {
        return (state == State::running || state == State::doubtful) &&
               std::ranges::any_of(order.clips, [&](std::string const& id) { return clips.contains(id); });
    }
    [[nodiscard]] bool isIn(std::set<std::string> const& owned) const {
        return std::ranges::all_of(order.clips, [&](std::string const& id) { return owned.contains(id); });
    }

    // Begins the watch, or goes on to the next look; behind the last one there is none.
    void schedule(Clock::time_point now) {
        nextLook.reset();
        Clock::time_point next = began;
        if (looks < std::size(firstLooks)) {
            next += firstLooks[looks];
        } else {
            next += firstLooks[std::size(firstLooks) - 1] +
                    laterLooks * static_cast<int>(looks + 1 - std::size(firstLooks));
        }
        ++looks;
        next = std::min(next, began + watched);
        if (now < began + watched) {
            nextLook = next;
        }
    }

    void add(JSON::Builder& json, char const* name) const {
        json.startChild(name);
        addText(json, "key", order.key);
        addTexts(json, "clips", order.clips);
        addText(json, "payment", order.payment == Payment::credits ? "credits" : "page");
        addText(json, "state", wordFor(state));
        json.add("code", wide(code ? std::to_string(*code) : "null"), false);
        addText(json, "text", text);
        addText(json, "page", page);
        json.endChild();
    }

    RepositoryDesk* desk;
    Order order;
    State state = State::running;
    std::optional<std::int32_t> code;
    std::string text;
    std::string page;
    std::string user; // whose list tells the end
    Clock::time_point began;
    std::size_t looks = 0;
    std::optional<Clock::time_point> nextLook;
    bool sent = false;
    bool expired = false; // refused since the watch ended, not by the service
};

// Shared with work at the desks, which may end after the purchases.
class Purchases::Records {
public:
    Records(EventHub& events, GivenLinks& givenLinks) : links(givenLinks), events_(events) {}

    std::shared_ptr<Record> find(RepositoryDesk const& desk, std::string const& key) {
        auto const found = std::ranges::find_if(all, [&](std::shared_ptr<Record> const& record) {
            return record->desk == &desk && record->order.key == key;
        });
        return found != all.end() ? *found : nullptr;
    }

    void tell(Record const& record) {
        JSON::Builder json;
        json.startChild(nullptr);
        addText(json, "repository", record.desk->shortName());
        record.add(json, "purchase");
        json.endChild();
        events_.send("purchase", utf8(json.getOutput()));
    }

    // What the account owns, as its list says now.
    void hear(RepositoryDesk const& desk, std::string const& user, std::set<std::string> const& owned,
              Clock::time_point now) {
        std::lock_guard const lock(mutex);
        for (std::shared_ptr<Record> const& record : all) {
            if (record->desk != &desk || record->user != user || !(record->isOpen() || record->expired)) {
                continue;
            }
            if (record->isIn(owned)) {
                settle(*record, State::done, "bought: the account owns the clips");
            } else if (record->isOpen() && now >= record->began + watched) {
                settle(*record, State::refused,
                       record->state == State::waiting
                           ? "not paid within half an hour; what is paid later shows among the owned clips"
                           : "nothing was bought: the account does not own the clips");
                record->expired = true;
            }
        }
    }

    std::mutex mutex; // guards the records and what is in them
    std::condition_variable_any changed;
    std::deque<std::shared_ptr<Record>> all; // the latest in front
    GivenLinks& links;

private:
    void settle(Record& record, State state, std::string text) {
        record.state = state;
        record.text = std::move(text);
        record.expired = false;
        record.nextLook.reset();
        tell(record);
    }

    EventHub& events_;
};

namespace {

struct Outcome {
    State state = State::doubtful;
    zq::Purchase purchase;
};

std::string textOfPage(zq::Purchase const& purchase) {
    return purchase.browserStarted
               ? "the payment page opens in the browser; what is paid there shows among the owned clips"
               : "the payment page waits; what is paid there shows among the owned clips";
}

// Sends the purchase. What is certain of its end decides, and nothing that only seems so.
Outcome send(Session& session, Purchases::Order const& order) {
    static_cast<void>(session.engine().shell().takeLastPage()); // of an earlier link
    ServiceWatch const watch = session.watch();
    Outcome outcome;
    try {
        outcome.purchase = buyClips(session, order.clips, order.payment);
    } catch (std::exception const& failure) {
        outcome.purchase.words = failure.what();
    }
    zq::Purchase& purchase = outcome.purchase;
    bool const byPage = order.payment == Payment::cash;
    if (purchase.code == zq::Purchase::done) {
        outcome.state = byPage ? State::waiting : State::done;
        purchase.words = byPage ? textOfPage(purchase) : purchase.words;
    } else if (purchase.code == zq::Purchase::refused || byPage || watch.fate() != ServiceWatch::Fate::lost) {
        // Without its page nobody can have paid.
        outcome.state = State::refused;
    } else {
        outcome.state = State::doubtful;
        purchase.words = "the answer was lost: " + watch.failure().value_or("nobody knows why") +
                         "; the list of owned clips will tell whether they were bought";
    }
    return outcome;
}

} // namespace

Purchases::Purchases(EventHub& events, GivenLinks& links, Now now, Watching watching)
    : records_(std::make_shared<Records>(events, links)), now_(std::move(now)) {
    if (watching == Watching::byOthers) {
        return;
    }
    thread_ = std::jthread([this](std::stop_token const& stop) {
        while (!stop.stop_requested()) {
            lookAtDue();
            std::unique_lock lock(records_->mutex);
            std::optional<Clock::time_point> next;
            for (std::shared_ptr<Record> const& record : records_->all) {
                if (record->nextLook && (!next || *record->nextLook < *next)) {
                    next = record->nextLook;
                }
            }
            // A purchase that becomes open wakes it.
            Clock::time_point const until = next.value_or(Clock::now() + watched);
            static_cast<void>(records_->changed.wait_until(lock, stop, until, [&] {
                return std::ranges::any_of(records_->all, [&](std::shared_ptr<Record> const& record) {
                    return record->nextLook && (!next || *record->nextLook < *next);
                });
            }));
        }
    });
}

Purchases::~Purchases() = default;

std::string Purchases::buy(RepositoryDesk& desk, Order const& order) {
    auto const json = [](Record const& record) {
        JSON::Builder builder;
        record.add(builder, nullptr);
        return utf8(builder.getOutput());
    };
    std::shared_ptr<Record> const record = std::make_shared<Record>(desk, order);
    {
        std::lock_guard const lock(records_->mutex);
        if (std::shared_ptr<Record> const earlier = records_->find(desk, order.key)) {
            return json(*earlier);
        }
        std::set<std::string> const clips(order.clips.begin(), order.clips.end());
        for (std::shared_ptr<Record> const& other : records_->all) {
            if (other->desk == &desk && other->blocks(clips)) {
                throw ApiError(ErrorCode::conflict,
                               other->state == State::running
                                   ? "a purchase with one of these clips is on its way"
                                   : "a purchase with one of these clips is in doubt: its end comes first");
            }
        }
        records_->all.push_front(record);
        while (records_->all.size() > most && records_->all.back()->isSettled()) {
            records_->all.pop_back();
        }
    }
    try {
        desk.ask([&](Session& session) {
            static_cast<void>(session.connected());
            if (!session.needsSignIn()) {
                throw ApiError(ErrorCode::conflict, "this repository sells nothing");
            }
            if (session.user().empty()) {
                throw ApiError(ErrorCode::conflict, "nobody is signed in");
            }
            {
                std::lock_guard const lock(records_->mutex);
                record->user = session.user();
                record->sent = true;
                records_->tell(*record);
            }
            Outcome outcome = send(session, order);
            records_->links.remember(outcome.purchase.page);
            {
                std::lock_guard const lock(records_->mutex);
                record->state = outcome.state;
                record->code = outcome.purchase.code;
                record->text = std::move(outcome.purchase.words);
                record->page = outcome.state == State::waiting ? outcome.purchase.page : std::string();
                record->began = now_();
                if (record->isOpen()) {
                    record->schedule(record->began);
                }
                records_->tell(*record);
            }
            records_->changed.notify_all();
            if (outcome.state == State::done) {
                // The clips of a search are marked by this list; nobody has to wait for it.
                desk.post([&desk](Session& later) { static_cast<void>(desk.readOwned(later)); });
            }
        });
    } catch (...) {
        std::lock_guard const lock(records_->mutex);
        if (!record->sent) {
            std::erase(records_->all, record);
        } else if (record->state == State::running) {
            record->state = State::doubtful; // for good: what is in doubt is never bought twice
        }
        throw;
    }
    std::lock_guard const lock(records_->mutex);
    return json(*record);
}

std::string Purchases::list(RepositoryDesk const& desk) const {
    JSON::Builder json;
    json.startChild(nullptr);
    json.startArray("purchases");
    std::lock_guard const lock(records_->mutex);
    for (std::shared_ptr<Record> const& record : records_->all) {
        if (record->desk == &desk) {
            record->add(json, nullptr);
        }
    }
    json.endArray();
    json.endChild();
    return utf8(json.getOutput());
}

LightweightVector<RemoteAsset> Purchases::readOwned(RepositoryDesk& desk, Session& session) {
    LightweightVector<RemoteAsset> all = desk.readOwned(session);
    std::set<std::string> owned;
    for (RemoteAsset const& asset : all) {
        owned.insert(utf8(asset.id));
    }
    records_->hear(desk, session.user(), owned, now_());
    return all;
}

void Purchases::lookAtDue() {
    std::set<RepositoryDesk*> due;
    Clock::time_point const now = now_();
    {
        std::lock_guard const lock(records_->mutex);
        for (std::shared_ptr<Record> const& record : records_->all) {
            if (record->isOpen() && record->nextLook && *record->nextLook <= now) {
                due.insert(record->desk);
                record->schedule(now);
            }
        }
    }
    for (RepositoryDesk* const desk : due) {
        desk->post([records = records_, desk, now](Session& session) {
            std::set<std::string> owned;
            for (RemoteAsset const& asset : desk->readOwned(session)) {
                owned.insert(utf8(asset.id));
            }
            records->hear(*desk, session.user(), owned, now);
        });
    }
}

} // namespace zq::panel
