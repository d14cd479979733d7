#include "apps/tarn7d/Payments.h"

#include "apps/tarn7d/AccountsDatabase.h"
#include "host/engine/crypto/Digest.h"

namespace tarn7d {

namespace {

constexpr std::size_t tokenBytes = 32;
// A client that asks again and again must not fill the file.
constexpr int mostOpenPayments = 20;

// Tells any change of what is in the cart and of what it costs.
std::string digestOf(Cart const& cart) {
    std::string text;
    for (CartLine const& line : cart.lines) {
        text += std::to_string(line.clip.id) + ":" + std::to_string(line.charge_cents()) +
                (line.owned ? ":owned\n" : ":new\n");
    }
    return engine::sha256Hex(text);
}

} // namespace

// A token's row with what it says at this moment.
struct Payments::Found {
    std::int64_t paymentId = 0;
    std::int64_t accountId = 0;
    View view;
};

Payments::Payments(std::filesystem::path const& accountsFile, Catalogue& catalogue,
                   std::chrono::seconds lifetime, WallClock clock)
    : catalogue_(catalogue), lifetime_(lifetime), clock_(std::move(clock)),
      database_(openAccountsDatabase(accountsFile)) {}

Payments::Begun Payments::begin(std::int64_t accountId) {
    std::lock_guard const lock(mutex_);
    engine::Transaction transaction(database_);
    {
        engine::Statement account = database_.prepare("SELECT payments_blocked FROM account WHERE id=?1");
        account.bind(1, accountId);
        if (!account.step()) {
            return {Outcome::noAccount, {}};
        }
        if (account.integer(0) != 0) {
            return {Outcome::blocked, {}};
        }
    }
    Cart const cart = readCart(database_, catalogue_, accountId);
    if (cart.lines.empty()) {
        return {Outcome::emptyCart, {}};
    }
    std::string const token = engine::randomHex(tokenBytes);
    database_
        .prepare("INSERT INTO payment (token_digest, account, expires, cart_digest) VALUES (?1, ?2, ?3, ?4)")
        .bind(1, std::string_view(engine::sha256Hex(token)))
        .bind(2, accountId)
        .bind(3, clock_() + lifetime_.count())
        .bind(4, std::string_view(digestOf(cart)))
        .run();
    database_
        .prepare("DELETE FROM payment WHERE account=?1 AND purchase IS NULL AND id NOT IN (SELECT id FROM "
                 "payment WHERE account=?1 AND purchase IS NULL ORDER BY id DESC LIMIT ?2)")
        .bind(1, accountId)
        .bind(2, mostOpenPayments)
        .run();
    transaction.commit();
    return {Outcome::done, token};
}

Payments::Found Payments::find(std::string_view token) {
    Found found;
    engine::Statement row = database_.prepare(
        "SELECT p.id, p.account, p.expires, p.cart_digest, p.purchase, a.name, a.payments_blocked "
        "FROM payment p JOIN account a ON a.id=p.account WHERE p.token_digest=?1");
    // Looked up by its digest: how long that takes tells nothing of the token itself.
    row.bind(1, std::string_view(engine::sha256Hex(token)));
    if (!row.step()) {
        return found;
    }
    found.paymentId = row.integer(0);
    found.accountId = row.integer(1);
    View& view = found.view;
    view.expires = row.integer(2);
    view.accountName = row.text(5);
    if (!row.isNull(4)) {
        view.state = State::paid;
        view.receipt = readReceipt(database_, row.integer(4));
    } else if (clock_() >= view.expires) {
        view.state = State::expired;
    } else if (row.integer(6) != 0) {
        view.state = State::blocked;
    } else {
        view.cart = readCart(database_, catalogue_, found.accountId);
        view.state = digestOf(view.cart) == row.text(3) ? State::open : State::changed;
    }
    return found;
}

Payments::View Payments::view(std::string_view token) {
    std::lock_guard const lock(mutex_);
    engine::Transaction const oneMoment(database_);
    return find(token).view;
}

Payments::View Payments::pay(std::string_view token) {
    std::lock_guard const lock(mutex_);
    engine::Transaction transaction(database_);
    Found found = find(token);
    if (found.view.state != State::open) {
        return found.view;
    }
    std::int64_t const number =
        enterPurchase(database_, found.accountId, found.view.cart, PaymentWay::card, clock_());
    database_.prepare("UPDATE payment SET purchase=?2 WHERE id=?1")
        .bind(1, found.paymentId)
        .bind(2, number)
        .run();
    found.view.state = State::paid;
    found.view.paidNow = true;
    found.view.receipt = readReceipt(database_, number);
    transaction.commit();
    return found.view;
}

} // namespace tarn7d
