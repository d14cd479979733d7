#include "apps/tarn7d/Ledger.h"

#include <algorithm>
#include <unordered_set>

namespace tarn7d {

namespace {

using Numbers = std::vector<std::int64_t>;

Numbers readNumbers(engine::Database& database, char const* question, std::int64_t accountId) {
    engine::Statement rows = database.prepare(question);
    rows.bind(1, accountId);
    Numbers numbers;
    while (rows.step()) {
        numbers.push_back(rows.integer(0));
    }
    return numbers;
}

std::int64_t enterHead(engine::Database& database, std::int64_t accountId, Cart const& cart, PaymentWay way,
                       std::int64_t now) {
    database
        .prepare("INSERT INTO purchase (account, made, way, total_cents, total_credits) "
                 "VALUES (?1, ?2, ?3, ?4, ?5)")
        .bind(1, accountId)
        .bind(2, now)
        .bind(3, std::string_view(way == PaymentWay::credits ? "credits" : "card"))
        .bind(4, cart.total_cents())
        .bind(5, cart.total_credits())
        .run();
    return database.lastInsertId();
}

} // namespace

std::int64_t creditsOf(std::int64_t price_cents) noexcept {
    return price_cents <= 0 ? 0 : (price_cents + 99) / 100;
}

std::int64_t CartLine::charge_cents() const noexcept {
    return owned ? 0 : clip.description.price_cents;
}

std::int64_t CartLine::charge_credits() const noexcept {
    return creditsOf(charge_cents());
}

std::int64_t Cart::total_cents() const noexcept {
    std::int64_t total = 0;
    for (CartLine const& line : lines) {
        total += line.charge_cents();
    }
    return total;
}

std::int64_t Cart::total_credits() const noexcept {
    std::int64_t total = 0;
    for (CartLine const& line : lines) {
        total += line.charge_credits();
    }
    return total;
}

Cart readCart(engine::Database& database, Catalogue& catalogue, std::int64_t accountId) {
    Numbers const ids =
        readNumbers(database, "SELECT clip FROM cart WHERE account=?1 ORDER BY clip", accountId);
    Numbers const owned = readNumbers(
        database, "SELECT clip FROM cart JOIN owned USING (account, clip) WHERE account=?1", accountId);
    std::unordered_set<std::int64_t> const isOwned(owned.begin(), owned.end());
    Cart cart;
    for (Clip& clip : catalogue.findAll(ids, Catalogue::Presence::there)) {
        bool const mine = isOwned.contains(clip.id);
        cart.lines.push_back({std::move(clip), mine});
    }
    return cart;
}

std::int64_t enterPurchase(engine::Database& database, std::int64_t accountId, Cart const& cart,
                           PaymentWay way, std::int64_t now) {
    std::int64_t const number =
        std::all_of(cart.lines.begin(), cart.lines.end(), [](CartLine const& line) { return line.owned; })
            ? 0
            : enterHead(database, accountId, cart, way, now);
    engine::Statement enter = database.prepare("INSERT INTO purchase_line (purchase, clip, title, "
                                               "price_cents, credits) VALUES (?1, ?2, ?3, ?4, ?5)");
    engine::Statement own =
        database.prepare("INSERT INTO owned (account, clip, purchase) VALUES (?1, ?2, ?3)");
    for (CartLine const& line : cart.lines) {
        if (line.owned) {
            continue;
        }
        enter.bind(1, number).bind(2, line.clip.id);
        enter.bind(3, std::string_view(line.clip.description.title));
        enter.bind(4, line.charge_cents()).bind(5, line.charge_credits()).run();
        own.bind(1, accountId).bind(2, line.clip.id).bind(3, number).run();
    }
    database.prepare("DELETE FROM cart WHERE account=?1").bind(1, accountId).run();
    return number;
}

Receipt readReceipt(engine::Database& database, std::int64_t purchaseNumber) {
    Receipt receipt;
    receipt.number = purchaseNumber;
    engine::Statement head = database.prepare("SELECT made, total_cents FROM purchase WHERE id=?1");
    head.bind(1, purchaseNumber);
    if (head.step()) {
        receipt.made = head.integer(0);
        receipt.total_cents = head.integer(1);
    }
    engine::Statement rows = database.prepare(
        "SELECT clip, title, price_cents FROM purchase_line WHERE purchase=?1 ORDER BY clip");
    rows.bind(1, purchaseNumber);
    while (rows.step()) {
        receipt.lines.push_back({rows.integer(0), std::string(rows.text(1)), rows.integer(2)});
    }
    return receipt;
}

} // namespace tarn7d
