#include "apps/zq/panel/Purchases.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/sendOrder.h"
#include "host/log/Log.h"

namespace zq::panel {

namespace {

using std::chrono::seconds;

// How often it is looked for what another program of this home has written.
constexpr std::chrono::milliseconds step{500};

[[noreturn]] void refuseFor(KeptOrder const& other) {
    InTheWay const found = inTheWayAs(other);
    throw ApiError(ErrorCode::conflict, found.text, found.reason);
}

void refuseOwned(RepositoryDesk const& desk, Session& session, std::vector<std::string> const& clips) {
    for (std::string const& id : clips) {
        RemoteAsset asset;
        asset.id = wide(id);
        if (desk.owns(session, asset)) {
            throw ApiError(ErrorCode::conflict, "one of these clips was bought already",
                           Reason::alreadyBought);
        }
    }
}

[[noreturn]] void refuseUnwritten(OrderBookError const& error) {
    throw ApiError(ErrorCode::conflict,
                   std::string("nothing was sent: the order cannot be written down: ") + error.what(),
                   Reason::orderUnwritten);
}

// With the records' mutex held.
OrderBook::Begun beginInBook(PurchaseRecords& records, RepositoryDesk const& desk, KeptOrder const& wanted) {
    try {
        return records.book.begin(wanted, records.listed(desk, wanted.user));
    } catch (OrderBookError const& error) {
        refuseUnwritten(error);
    }
}

} // namespace

Purchases::Purchases(OrderBook& book, std::vector<std::unique_ptr<RepositoryDesk>> const& desks,
                     EventHub& events, GivenLinks& links, Baskets& baskets, Clocks clocks, Watching watching)
    : records_(std::make_shared<PurchaseRecords>(book, desks, events, links, baskets, std::move(clocks))) {
    records_->takeNews();
    if (watching == Watching::byOthers) {
        return;
    }
    thread_ = std::jthread([this](std::stop_token const& stop) {
        std::mutex waiting;
        std::condition_variable_any never;
        std::unique_lock lock(waiting);
        while (!never.wait_for(lock, stop, step, [&] { return stop.stop_requested(); })) {
            try {
                lookAtDue();
            } catch (std::exception const& failure) {
                Log("The purchases were not looked after: %s", failure.what());
            }
        }
    });
}

Purchases::~Purchases() = default;

std::string Purchases::buy(RepositoryDesk& desk, Order const& order) {
    KeptOrder wanted;
    wanted.repository = desk.shortName();
    wanted.key = order.key;
    wanted.clips = order.clips;
    wanted.payment = order.payment;
    auto record = std::make_shared<PurchaseRecord>();
    record->desk = &desk;
    record->kept = wanted;
    {
        std::lock_guard const lock(records_->mutex);
        if (std::shared_ptr<PurchaseRecord> const earlier = records_->find(desk, order.key)) {
            earlier->shown = true;
            return earlier->json();
        }
        // A second click need not wait for the end of the first. The others are looked at where it is known
        // who is signed in.
        std::set<std::string> const clips(order.clips.begin(), order.clips.end());
        for (std::shared_ptr<PurchaseRecord> const& other : records_->all) {
            if (other->desk == &desk && other->kept.state == OrderState::running && other->hasOneOf(clips)) {
                refuseFor(other->kept);
            }
        }
        records_->add(record);
    }
    // True where it was written down as running: then it is sent.
    auto const begin = [&](Session& session) {
        static_cast<void>(session.connected());
        if (!session.needsSignIn()) {
            throw ApiError(ErrorCode::conflict, "this repository sells nothing", Reason::sellsNothing);
        }
        if (session.user().empty()) {
            throw ApiError(ErrorCode::conflict, "nobody is signed in", Reason::notSignedIn);
        }
        refuseOwned(desk, session, order.clips);
        wanted.user = session.user();
        wanted.sent = std::chrono::floor<seconds>(records_->clocks.date());
        std::unique_lock lock(records_->mutex);
        OrderBook::Begun begun = beginInBook(*records_, desk, wanted);
        if (begun.kind == OrderBook::Begun::Kind::blocked && begun.order.isListed()) {
            // Another program has bought it, and the list that this one knows is older: a new one tells.
            lock.unlock();
            static_cast<void>(records_->readOwned(desk, session));
            refuseOwned(desk, session, order.clips);
            lock.lock();
            begun = beginInBook(*records_, desk, wanted);
        }
        if (begun.kind == OrderBook::Begun::Kind::blocked) {
            refuseFor(begun.order);
        }
        if (begun.kind == OrderBook::Begun::Kind::known) {
            std::erase(records_->all, record);
            if (begun.order.clips.empty()) { // withdrawn
                record = std::make_shared<PurchaseRecord>();
                record->desk = &desk;
                record->kept = std::move(begun.order);
            } else {
                record = records_->take(desk, std::move(begun.order));
            }
            return false;
        }
        record->kept = std::move(begun.order);
        record->sent = true;
        records_->tell(*record);
        return true;
    };
    try {
        desk.ask([&](Session& session) {
            if (!begin(session)) {
                return;
            }
            OrderEnd end = sendOrder(session, order.clips, order.payment);
            records_->links.remember(end.purchase.page);
            bool const isDone = end.state == OrderState::done;
            records_->end(*record, std::move(end));
            if (isDone) {
                records_->baskets.remove(desk, order.clips);
                desk.countAsOwned(order.clips);
                // The clips of a search are marked by this list; nobody has to wait for it.
                lookLater(desk);
            }
        });
    } catch (std::exception const& failure) {
        std::unique_lock lock(records_->mutex);
        if (!record->sent) {
            std::erase(records_->all, record);
            if (record->shown) {
                record->kept.state = OrderState::refused;
                record->kept.text = failure.what();
                record->kept.isAwaited = false;
                records_->tell(*record);
            }
            throw;
        }
        Log("A purchase was not followed to its end: %s", failure.what());
        bool const isOpenStill = record->kept.state == OrderState::running;
        lock.unlock();
        if (isOpenStill) {
            records_->end(*record, orderOfUnknownEnd("the program failed"));
        }
    }
    std::lock_guard const lock(records_->mutex);
    return record->json();
}

std::string Purchases::withdraw(RepositoryDesk& desk, std::string const& key) {
    std::lock_guard const lock(records_->mutex);
    if (std::shared_ptr<PurchaseRecord> const record = records_->find(desk, key)) {
        record->shown = true;
        return record->json();
    }
    try {
        KeptOrder order = records_->book.withdraw(
            desk.shortName(), key, "nothing was bought: the order had not reached the program");
        PurchaseRecord record;
        record.kept = std::move(order);
        return record.json();
    } catch (OrderBookError const& error) {
        refuseUnwritten(error);
    }
}

std::string Purchases::list(RepositoryDesk const& desk) const {
    JSON::Builder json;
    json.startChild(nullptr);
    json.startArray("purchases");
    std::lock_guard const lock(records_->mutex);
    for (std::shared_ptr<PurchaseRecord> const& record : records_->all) {
        if (record->desk == &desk) {
            record->add(json, nullptr);
        }
    }
    json.endArray();
    json.endChild();
    return utf8(json.getOutput());
}

std::set<std::string> Purchases::undecided(RepositoryDesk const& desk, std::string const& user) const {
    std::set<std::string> clips;
    std::lock_guard const lock(records_->mutex);
    for (std::shared_ptr<PurchaseRecord> const& record : records_->all) {
        if (record->desk == &desk && record->kept.user == user &&
            (record->kept.state == OrderState::running || record->kept.state == OrderState::doubtful)) {
            clips.insert(record->kept.clips.begin(), record->kept.clips.end());
        }
    }
    return clips;
}

LightweightVector<RemoteAsset> Purchases::readOwned(RepositoryDesk& desk, Session& session) {
    return records_->readOwned(desk, session);
}

void Purchases::lookLater(RepositoryDesk& desk) {
    desk.post([records = records_, &desk](Session& session) {
        static_cast<void>(records->readOwned(desk, session));
    });
}

void Purchases::lookAtDue() {
    records_->takeNews();
    std::vector<RepositoryDesk*> due;
    {
        std::lock_guard const lock(records_->mutex);
        due = records_->due();
    }
    for (RepositoryDesk* const desk : due) {
        desk->post([records = records_, desk](Session& session) { records->lookIfAwaited(*desk, session); });
    }
}

} // namespace zq::panel
