#include "apps/zq/orderClips.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include "apps/zq/PurchaseWatch.h"
#include "apps/zq/Reply.h"
#include "apps/zq/Text.h"
#include "host/engine/Engine.h"
#include "host/engine/crypto/Digest.h"

namespace zq {

namespace {

using std::chrono::floor;
using std::chrono::seconds;
using std::chrono::system_clock;

constexpr std::size_t key_bytes = 16;

std::filesystem::path fileOfBook(Session const& session) {
    return session.engine().home() / "purchases.db";
}

std::vector<std::string> eachOnce(std::vector<std::string> const& ids) {
    std::vector<std::string> clips;
    std::set<std::string> seen;
    for (std::string const& id : ids) {
        requireClipNumber(id);
        if (seen.insert(id).second) {
            clips.push_back(id);
        }
    }
    return clips;
}

[[noreturn]] void refuseFor(KeptOrder const& other) {
    InTheWay const found = inTheWayAs(other);
    char const* const advice =
        other.state == OrderState::running ? "; the other program tells what comes of it"
        : other.state == OrderState::done
            ? "; the list of owned clips does not have them yet: \"zq owned\" asks for it"
            : "; \"zq owned\" asks for the list of what is owned, which decides, and \"zq panel\" watches it";
    throw ReasonedError(found.reason, std::string("nothing was bought: ") + found.text + advice);
}

// Writes the order down as running. Throws CommandError where it must not be sent.
void begin(Session& session, OrderBook& book, KeptOrder const& wanted) {
    try {
        OrderBook::Begun begun = book.begin(wanted, book.newest());
        if (begun.kind == OrderBook::Begun::Kind::blocked && begun.order.state == OrderState::done) {
            // What is bought may be ordered again, and costs nothing, once the list has it.
            static_cast<void>(settleOrders(session, session.ownedAssets()));
            begun = book.begin(wanted, book.newest());
        }
        if (begun.kind != OrderBook::Begun::Kind::written) {
            refuseFor(begun.order);
        }
    } catch (OrderBookError const& error) {
        throw ReasonedError(Reason::orderUnwritten,
                            std::string("nothing was bought: the order cannot be written down: ") +
                                error.what());
    }
}

bool isIn(std::set<std::string> const& owned, KeptOrder const& order) {
    return std::ranges::all_of(order.clips, [&](std::string const& id) { return owned.contains(id); });
}

// A watch that nobody keeps takes the least of one more, as a clock that was set says too much.
bool isOver(KeptOrder const& order, system_clock::time_point now) {
    return now - order.sent >= watchLength(order) + PurchaseWatch::shortest;
}

} // namespace

ClipOrder orderClips(Session& session, std::vector<std::string> const& ids, Payment payment) {
    KeptOrder wanted;
    wanted.clips = eachOnce(ids);
    requireSale(session);
    static_cast<void>(session.signedIn());
    wanted.repository = utf8(session.shortName());
    wanted.user = session.user();
    wanted.key = engine::randomHex(key_bytes);
    wanted.payment = payment;
    wanted.sent = floor<seconds>(system_clock::now());
    OrderBook book(fileOfBook(session));
    begin(session, book, wanted);
    OrderEnd end = sendOrder(session, wanted.clips, payment);
    ClipOrder order;
    order.state = end.state;
    order.purchase = end.purchase;
    try {
        book.finish(ended(std::move(wanted), std::move(end)));
    } catch (OrderBookError const& error) {
        order.unwritten = error.what();
    }
    if (order.state == OrderState::doubtful) {
        order.purchase.words = "the purchase is in doubt: " + order.purchase.words +
                               ", and until then they are not bought again: \"zq owned\" asks for it";
    }
    return order;
}

OrdersAtList settleOrders(Session& session, LightweightVector<RemoteAsset> const& owned) {
    OrdersAtList orders;
    std::error_code error;
    if (!std::filesystem::exists(fileOfBook(session), error) && !error) {
        return orders; // nothing was ever ordered here
    }
    std::set<std::string> ids;
    for (RemoteAsset const& asset : owned) {
        ids.insert(utf8(asset.id));
    }
    std::string const repository = utf8(session.shortName());
    std::string const user = session.user();
    try {
        OrderBook book(fileOfBook(session));
        for (KeptOrder& order : book.news()) {
            bool const isTold = order.repository == repository && order.user == user && order.isAwaited &&
                                order.state != OrderState::running;
            if (!isTold) {
                continue;
            }
            bool const wasDone = order.state == OrderState::done;
            bool const wasDoubtful = order.state == OrderState::doubtful;
            bool isDecided = false;
            if (isIn(ids, order) || isOver(order, system_clock::now())) {
                KeptOrder next = isIn(ids, order) ? asListed(order) : asNeverListed(order);
                isDecided = book.settle(next);
                order = isDecided ? std::move(next) : std::move(order);
            }
            if (!wasDone && (isDecided || wasDoubtful)) {
                orders.told.push_back(std::move(order));
            }
        }
    } catch (OrderBookError const& failure) {
        orders.trouble = failure.what();
    }
    return orders;
}

} // namespace zq
