#include "apps/zq/sendOrder.h"

#include <exception>
#include <utility>

#include "apps/zq/PurchaseWatch.h"
#include "host/engine/Engine.h"
#include "host/engine/os/DesktopShell.h"

namespace zq {

namespace {

std::string textOfPage(Purchase const& purchase) {
    return purchase.browserStarted
               ? "the payment page opens in the browser; what is paid there shows among the owned clips"
               : "the payment page waits; what is paid there shows among the owned clips";
}

std::string doubt(std::string const& why) {
    return why + "; the list of owned clips will tell whether they were bought";
}

} // namespace

OrderEnd sendOrder(Session& session, std::vector<std::string> const& clips, Payment payment) {
    using Fate = ServiceWatch::Fate;
    static_cast<void>(session.engine().shell().takeLastPage()); // of an earlier link
    ServiceWatch const watch = session.watch();
    OrderEnd end;
    Purchase& purchase = end.purchase;
    try {
        purchase = buyClips(session, clips, payment);
    } catch (std::exception const& failure) {
        purchase.words = failure.what();
    }
    end.known = purchase.code;
    bool const byPage = payment == Payment::cash;
    Fate const fate = watch.fate();
    if (purchase.code == Purchase::done) {
        end.state = byPage ? OrderState::waiting : OrderState::done;
    } else if (purchase.code == Purchase::refused || byPage || (fate != Fate::lost && fate != Fate::ended)) {
        // Without its page nobody can have paid.
        end.state = OrderState::refused;
    } else {
        end.state = OrderState::doubtful;
        end.wasEnded = fate == Fate::ended;
        std::string const why = watch.failure().value_or("nobody knows why");
        purchase.words = doubt(end.wasEnded ? why : "the answer was lost: " + why);
    }
    return end;
}

OrderEnd orderOfUnknownEnd(std::string const& why) {
    OrderEnd end;
    end.purchase.words = doubt("the answer was lost: " + why);
    return end;
}

KeptOrder ended(KeptOrder order, OrderEnd end) {
    bool const isWaiting = end.state == OrderState::waiting;
    order.state = end.state;
    order.wasEnded = end.wasEnded;
    order.code = end.known;
    order.text = isWaiting ? textOfPage(end.purchase) : std::move(end.purchase.words);
    order.page = isWaiting ? std::move(end.purchase.page) : std::string();
    order.isAwaited = end.state != OrderState::refused;
    return order;
}

KeptOrder asListed(KeptOrder order) {
    order.isAwaited = false;
    if (order.state != OrderState::done) {
        order.state = OrderState::done;
        order.text = "bought: the account owns the clips";
    }
    return order;
}

KeptOrder asNeverListed(KeptOrder order) {
    if (order.state == OrderState::done) {
        order.isAwaited = false;
        order.text += "; the list of owned clips does not have them";
        return order;
    }
    order.text = order.payment == Payment::cash
                     ? "not paid within half an hour; what is paid later shows among the owned clips"
                     : "nothing was bought: the account does not own the clips";
    order.state = OrderState::refused; // and awaited still
    return order;
}

// A server of the service that answers with an error of its own works on the order no more. The list may lag
// behind what was written then, which a short while covers. A lost answer, and one of a gateway that has lost
// the service, leave open whether it is carried out later.
std::chrono::seconds watchLength(KeptOrder const& order) {
    return order.state == OrderState::doubtful && order.wasEnded ? PurchaseWatch::afterAnswer
                                                                 : PurchaseWatch::longest;
}

InTheWay inTheWayAs(KeptOrder const& other) {
    switch (other.state) {
    case OrderState::running:
        return {Reason::beingBought, "a purchase with one of these clips is on its way"};
    case OrderState::done:
        return {Reason::alreadyBought, "one of these clips was bought already"};
    default:
        return {Reason::inDoubt, "a purchase with one of these clips is in doubt: its end comes first"};
    }
}

} // namespace zq
