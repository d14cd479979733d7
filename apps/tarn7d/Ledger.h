// What both ways of buying share: the cart with its prices, and the entry of a purchase. These work inside a
// transaction of their caller and see the cart, the prices and the ownership of one moment.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "apps/tarn7d/Catalogue.h"
#include "host/engine/storage/Database.h"

namespace tarn7d {

// One credit pays one dollar; a part of a dollar counts as a whole credit, for each clip by itself, so that
// a clip costs the same alone and among others.
[[nodiscard]] std::int64_t creditsOf(std::int64_t price_cents) noexcept;

struct CartLine {
    Clip clip;
    bool owned = false; // and so costs nothing any more

    [[nodiscard]] std::int64_t charge_cents() const noexcept;
    [[nodiscard]] std::int64_t charge_credits() const noexcept;
};

struct Cart {
    std::vector<CartLine> lines; // by the clips' numbers

    [[nodiscard]] std::int64_t total_cents() const noexcept;
    [[nodiscard]] std::int64_t total_credits() const noexcept;
};

// The account's cart. Clips whose file is gone cannot be delivered and do not show.
[[nodiscard]] Cart readCart(engine::Database& database, Catalogue& catalogue, std::int64_t accountId);

enum class PaymentWay { credits, card };

// Enters the purchase of the lines that are not owned yet, makes them owned and empties the cart, also of
// clips that do not show. Charges nothing itself. Gives the number of the purchase; 0 when everything was
// owned already, where nothing is entered.
std::int64_t enterPurchase(engine::Database& database, std::int64_t accountId, Cart const& cart,
                           PaymentWay way, std::int64_t now);

// A purchase as it was entered, with the titles and prices of that time.
struct Receipt {
    struct Line {
        std::int64_t clipId = 0;
        std::string title;
        std::int64_t price_cents = 0;
    };
    std::int64_t number = 0;
    std::int64_t made = 0; // seconds since 1970
    std::int64_t total_cents = 0;
    std::vector<Line> lines;
};

[[nodiscard]] Receipt readReceipt(engine::Database& database, std::int64_t purchaseNumber);

} // namespace tarn7d
