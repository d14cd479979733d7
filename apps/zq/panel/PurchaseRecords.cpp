#include "apps/zq/panel/PurchaseRecords.h"

#include <algorithm>

#include "apps/zq/JsonOutput.h"
#include "host/log/Log.h"

namespace zq::panel {

namespace {

using std::chrono::seconds;

} // namespace

bool PurchaseRecord::hasOneOf(std::set<std::string> const& clips) const {
    return std::ranges::any_of(kept.clips, [&](std::string const& id) { return clips.contains(id); });
}

bool PurchaseRecord::isIn(std::set<std::string> const& owned) const {
    return std::ranges::all_of(kept.clips, [&](std::string const& id) { return owned.contains(id); });
}

void PurchaseRecord::add(JSON::Builder& json, char const* name) const {
    auto const sent_s = std::chrono::duration_cast<seconds>(kept.sent.time_since_epoch()).count();
    json.startChild(name);
    addText(json, "key", kept.key);
    addText(json, "user", kept.user);
    addTexts(json, "clips", kept.clips);
    addText(json, "payment", kept.payment == Payment::credits ? "credits" : "page");
    addText(json, "state", wordFor(kept.state));
    json.add("code", wide(kept.code ? std::to_string(*kept.code) : "null"), false);
    addText(json, "text", kept.text);
    addText(json, "trouble", trouble);
    addText(json, "page", kept.page);
    addNumber(json, "time", static_cast<std::size_t>(std::max<std::int64_t>(0, sent_s)));
    json.endChild();
}

std::string PurchaseRecord::json() const {
    JSON::Builder builder;
    add(builder, nullptr);
    return utf8(builder.getOutput());
}

PurchaseRecords::PurchaseRecords(OrderBook& orders, Desks const& allDesks, EventHub& events,
                                 GivenLinks& givenLinks, Baskets& itsBaskets, PurchaseClocks itsClocks)
    : book(orders), links(givenLinks), baskets(itsBaskets), clocks(std::move(itsClocks)), desks_(allDesks),
      events_(events) {}

std::shared_ptr<PurchaseRecord> PurchaseRecords::find(RepositoryDesk const& desk, std::string const& key) {
    auto const found = std::ranges::find_if(all, [&](std::shared_ptr<PurchaseRecord> const& record) {
        return record->desk == &desk && record->kept.key == key;
    });
    return found != all.end() ? *found : nullptr;
}

void PurchaseRecords::add(std::shared_ptr<PurchaseRecord> const& record) {
    all.push_front(record);
    while (all.size() > OrderBook::most && all.back()->isSettled()) {
        all.pop_back();
    }
}

void PurchaseRecords::tell(PurchaseRecord const& record) {
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "repository", record.desk->shortName());
    record.add(json, "purchase");
    json.endChild();
    events_.send("purchase", utf8(json.getOutput()));
}

std::shared_ptr<PurchaseRecord> PurchaseRecords::take(RepositoryDesk& desk, KeptOrder order) {
    std::shared_ptr<PurchaseRecord> record = find(desk, order.key);
    if (record && record->kept == order) {
        return record;
    }
    if (!record) {
        record = std::make_shared<PurchaseRecord>();
        record->desk = &desk;
        add(record);
    }
    record->sent = true;
    record->kept = std::move(order);
    links.remember(record->kept.page);
    tell(*record);
    return record;
}

std::vector<RepositoryDesk*> PurchaseRecords::due() {
    std::vector<RepositoryDesk*> desks;
    Clock::time_point const now = clocks.now();
    for (std::shared_ptr<PurchaseRecord> const& record : all) {
        bool const isDue =
            record->isWatched() && (record->watch ? record->watch->next() <= now : !record->lookedAt);
        if (!isDue) {
            continue;
        }
        record->lookedAt = true;
        if (record->watch) {
            record->watch->moveOn(now);
        }
        if (asked_.insert(record->desk).second) {
            desks.push_back(record->desk);
        }
    }
    return desks;
}

std::int64_t PurchaseRecords::listed(RepositoryDesk const& desk, std::string const& user) const {
    auto const found = listed_.find({&desk, user});
    return found != listed_.end() ? found->second : 0;
}

void PurchaseRecords::takeNews() {
    std::lock_guard const lock(mutex);
    try {
        for (KeptOrder& order : book.news()) {
            auto const desk = std::ranges::find_if(desks_, [&](std::unique_ptr<RepositoryDesk> const& one) {
                return one->shortName() == order.repository;
            });
            if (desk != desks_.end() && !order.clips.empty()) {
                static_cast<void>(take(**desk, std::move(order)));
            }
        }
        bookTrouble_.clear();
    } catch (OrderBookError const& error) {
        if (bookTrouble_ != error.what()) {
            bookTrouble_ = error.what();
            Log("Nothing can be bought: %s", error.what());
        }
    }
    for (std::shared_ptr<PurchaseRecord> const& record : all) {
        if (record->unwritten && bookTrouble_.empty()) {
            writeEnd(*record);
        }
    }
}

void PurchaseRecords::end(PurchaseRecord& record, OrderEnd end) {
    std::lock_guard const lock(mutex);
    record.kept = ended(std::move(record.kept), std::move(end));
    if (record.isWatched()) {
        record.watch.emplace(clocks.now(), watchLength(record.kept));
    }
    writeEnd(record);
    tell(record);
}

// What cannot be written is tried again with the next news. Until then the book has it as running, and a
// later run as in doubt: the list of what is owned decides then.
void PurchaseRecords::writeEnd(PurchaseRecord& record) {
    try {
        book.finish(record.kept);
        record.unwritten = false;
    } catch (OrderBookError const& error) {
        if (!record.unwritten) {
            Log("What came of a purchase was not written down yet: %s", error.what());
        }
        record.unwritten = true;
    }
}

LightweightVector<RemoteAsset> PurchaseRecords::readOwned(RepositoryDesk& desk, Session& session) {
    Clock::time_point const asked = clocks.now();
    std::int64_t newest = 0;
    try {
        newest = book.newest();
    } catch (OrderBookError const&) {
        // Then nothing can be ordered either.
    }
    LightweightVector<RemoteAsset> list;
    try {
        list = desk.readOwned(session);
    } catch (std::exception const& failure) {
        hearNothing(desk, session.user(), failure.what());
        throw;
    }
    std::set<std::string> owned;
    for (RemoteAsset const& asset : list) {
        owned.insert(utf8(asset.id));
    }
    hear(desk, session.user(), owned, asked, newest);
    return list;
}

void PurchaseRecords::lookIfAwaited(RepositoryDesk& desk, Session& session) {
    bool isAwaited = false;
    {
        std::lock_guard const lock(mutex);
        asked_.erase(&desk);
        isAwaited = std::ranges::any_of(all, [&](std::shared_ptr<PurchaseRecord> const& record) {
            return record->desk == &desk && record->kept.user == session.user() && record->isWatched();
        });
    }
    if (isAwaited) {
        static_cast<void>(readOwned(desk, session));
    }
}

// What the account owns, as its list says that was asked for at that moment.
void PurchaseRecords::hear(RepositoryDesk& desk, std::string const& user, std::set<std::string> const& owned,
                           Clock::time_point asked, std::int64_t newest) {
    std::vector<std::string> bought;
    {
        std::lock_guard const lock(mutex);
        listed_[{&desk, user}] = newest;
        for (std::shared_ptr<PurchaseRecord> const& record : all) {
            if (record->desk != &desk || record->kept.user != user || !record->kept.isAwaited ||
                record->kept.state == OrderState::running) {
                continue;
            }
            bool const hadTrouble = !record->trouble.empty();
            record->trouble.clear();
            if (record->isIn(owned)) {
                bought.insert(bought.end(), record->kept.clips.begin(), record->kept.clips.end());
                hearOwned(*record);
            } else if (record->isWatched()) {
                hearMissing(*record, asked);
            }
            if (hadTrouble) {
                tell(*record);
            }
        }
    }
    baskets.remove(desk, bought);
    countUnlisted(desk, user);
}

void PurchaseRecords::hearOwned(PurchaseRecord& record) {
    settle(record, asListed(record.kept));
}

void PurchaseRecords::hearMissing(PurchaseRecord& record, Clock::time_point asked) {
    if (!record.watch) {
        beginWatch(record, asked);
        return;
    }
    if (!record.watch->isOver(asked)) {
        return;
    }
    settle(record, asNeverListed(record.kept));
}

void PurchaseRecords::hearNothing(RepositoryDesk& desk, std::string const& user, std::string const& why) {
    {
        std::lock_guard const lock(mutex);
        for (std::shared_ptr<PurchaseRecord> const& record : all) {
            if (record->desk != &desk || record->kept.user != user || !record->isWatched()) {
                continue;
            }
            if (!record->watch) {
                beginWatch(*record, clocks.now());
            }
            if (record->trouble != why) {
                record->trouble = why;
                tell(*record);
            }
        }
    }
    countUnlisted(desk, user);
}

// Of an order of another run, whose account is signed in now.
void PurchaseRecords::beginWatch(PurchaseRecord& record, Clock::time_point now) const {
    seconds const age = std::chrono::duration_cast<seconds>(clocks.date() - record.kept.sent);
    record.watch.emplace(now, PurchaseWatch::lengthLeft(age, watchLength(record.kept)));
}

// What cannot be written stays as it was, for the next look; what another program has decided first comes
// with the next news.
void PurchaseRecords::settle(PurchaseRecord& record, KeptOrder next) {
    if (record.unwritten) {
        return;
    }
    try {
        if (!book.settle(next)) {
            return;
        }
    } catch (OrderBookError const& error) {
        Log("What came of a purchase was not written down yet: %s", error.what());
        return;
    }
    bool const isNews = record.kept.state != next.state || record.kept.text != next.text;
    record.kept = std::move(next);
    if (!record.isWatched()) {
        record.watch.reset();
    }
    if (isNews) {
        tell(record);
    }
}

// What the service says is bought and its list does not have yet is owned all the same.
void PurchaseRecords::countUnlisted(RepositoryDesk& desk, std::string const& user) {
    std::vector<std::string> clips;
    {
        std::lock_guard const lock(mutex);
        for (std::shared_ptr<PurchaseRecord> const& record : all) {
            if (record->desk == &desk && record->kept.user == user && record->kept.isAwaited &&
                record->kept.state == OrderState::done) {
                clips.insert(clips.end(), record->kept.clips.begin(), record->kept.clips.end());
            }
        }
    }
    desk.countAsOwned(clips);
}

} // namespace zq::panel
