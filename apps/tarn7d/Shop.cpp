#include "apps/tarn7d/Shop.h"

#include <algorithm>

#include "apps/tarn7d/AccountsDatabase.h"

namespace tarn7d {

Shop::Shop(std::filesystem::path const& accountsFile, Catalogue& catalogue, WallClock clock)
    : catalogue_(catalogue), clock_(std::move(clock)), database_(openAccountsDatabase(accountsFile)) {}

Cart Shop::cart(std::int64_t accountId) {
    std::lock_guard const lock(mutex_);
    engine::Transaction const oneMoment(database_);
    return readCart(database_, catalogue_, accountId);
}

bool Shop::allKnown(std::span<std::int64_t const> ids, Catalogue::Presence presence) {
    return catalogue_.findAll(ids, presence).size() == ids.size();
}

Shop::CartChange Shop::changeCart(std::int64_t accountId, std::span<std::int64_t const> remove,
                                  std::span<std::int64_t const> add) {
    if (!allKnown(add, Catalogue::Presence::there) || !allKnown(remove, Catalogue::Presence::ever)) {
        return CartChange::unknownClip;
    }
    std::lock_guard const lock(mutex_);
    engine::Transaction transaction(database_);
    engine::Statement drop = database_.prepare("DELETE FROM cart WHERE account=?1 AND clip=?2");
    for (std::int64_t const id : remove) {
        drop.bind(1, accountId).bind(2, id).run();
    }
    engine::Statement put = database_.prepare("INSERT OR IGNORE INTO cart (account, clip) VALUES (?1, ?2)");
    for (std::int64_t const id : add) {
        put.bind(1, accountId).bind(2, id).run();
    }
    engine::Statement count = database_.prepare("SELECT count(*) FROM cart WHERE account=?1");
    count.bind(1, accountId);
    if (count.step() && count.integer(0) > static_cast<std::int64_t>(mostInCart)) {
        count.reset();
        return CartChange::full;
    }
    count.reset();
    transaction.commit();
    return CartChange::done;
}

Shop::Purchase Shop::buyWithCredits(std::int64_t accountId) {
    std::lock_guard const lock(mutex_);
    engine::Transaction transaction(database_);
    Purchase purchase;
    {
        engine::Statement account =
            database_.prepare("SELECT credits, payments_blocked FROM account WHERE id=?1");
        account.bind(1, accountId);
        if (!account.step()) {
            return {Outcome::noAccount};
        }
        purchase.left_credits = account.integer(0);
        if (account.integer(1) != 0) {
            return {Outcome::blocked};
        }
    }
    Cart const cart = readCart(database_, catalogue_, accountId);
    if (cart.lines.empty()) {
        return {Outcome::emptyCart};
    }
    purchase.charged_credits = cart.total_credits();
    if (purchase.charged_credits > purchase.left_credits) {
        return {Outcome::notCovered};
    }
    purchase.left_credits -= purchase.charged_credits;
    database_.prepare("UPDATE account SET credits=?2 WHERE id=?1")
        .bind(1, accountId)
        .bind(2, purchase.left_credits)
        .run();
    enterPurchase(database_, accountId, cart, PaymentWay::credits, clock_());
    transaction.commit();
    return purchase;
}

std::vector<std::int64_t> Shop::owned(std::int64_t accountId) {
    std::lock_guard const lock(mutex_);
    engine::Statement rows =
        database_.prepare("SELECT clip FROM owned WHERE account=?1 ORDER BY purchase DESC, clip");
    rows.bind(1, accountId);
    std::vector<std::int64_t> clips;
    while (rows.step()) {
        clips.push_back(rows.integer(0));
    }
    return clips;
}

bool Shop::owns(std::int64_t accountId, std::int64_t clipId) {
    std::lock_guard const lock(mutex_);
    engine::Statement row = database_.prepare("SELECT 1 FROM owned WHERE account=?1 AND clip=?2");
    row.bind(1, accountId).bind(2, clipId);
    return row.step();
}

} // namespace tarn7d
