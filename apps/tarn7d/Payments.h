// Payments on a page: a client hands the buyer's browser an address with a token, and the page pays the cart
// that the token was made for.
//
// The token is all that the page asks for, so it is random, is kept as a digest only, stands for one cart at
// one price, pays once, and expires.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/Ledger.h"
#include "apps/tarn7d/WallClock.h"
#include "host/engine/storage/Database.h"

namespace tarn7d {

// Any thread for every operation; all throw engine::DatabaseError when a file fails, and nothing has then
// changed.
class Payments {
public:
    static constexpr std::chrono::minutes usualLifetime{30};

    enum class Outcome { done, noAccount, emptyCart, blocked };
    struct Begun {
        Outcome outcome = Outcome::done;
        std::string token; // when done: hexadecimal digits
    };

    enum class State {
        unknown, // no such token, or one of a removed account
        open,
        expired,
        changed, // the cart or a price is not what the token was made for
        blocked, // the account may not buy
        paid,
    };
    // What a token stands for now.
    struct View {
        State state = State::unknown;
        bool paidNow = false; // by this call, and not before
        std::string accountName;
        std::int64_t expires = 0;
        Cart cart;       // when open
        Receipt receipt; // when paid; number 0 when everything was owned already
    };

    // As for Shop.
    Payments(std::filesystem::path const& accountsFile, Catalogue& catalogue,
             std::chrono::seconds lifetime = usualLifetime, WallClock clock = systemSeconds);

    // A token for the account's cart as it is now. Older ones that were not used go on until they expire.
    [[nodiscard]] Begun begin(std::int64_t accountId);

    [[nodiscard]] View view(std::string_view token);
    // Hands over the cart in one transaction if the token is open, and does nothing otherwise. The view is
    // that after the call.
    [[nodiscard]] View pay(std::string_view token);

private:
    struct Found;
    [[nodiscard]] Found find(std::string_view token);

    Catalogue& catalogue_;
    std::chrono::seconds const lifetime_;
    WallClock const clock_;
    std::mutex mutex_; // guards the database
    engine::Database database_;
};

} // namespace tarn7d
