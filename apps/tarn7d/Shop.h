// The shop: carts, purchases with credits, and what an account owns.
//
// An account owns a clip once. Buying what is owned costs nothing and succeeds, so a buyer whose answer was
// lost may simply ask again.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <span>
#include <vector>

#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/Ledger.h"
#include "apps/tarn7d/WallClock.h"
#include "host/engine/storage/Database.h"

namespace tarn7d {

// Any thread for every operation, and several processes may work on the file. All throw engine::DatabaseError
// when a file fails; nothing has then changed.
class Shop {
public:
    static constexpr std::size_t mostInCart = 10000;

    enum class CartChange {
        done,
        unknownClip, // to be added and not there, or to be removed and never known
        full,
    };
    enum class Outcome {
        done,
        noAccount,
        emptyCart,
        notCovered, // by the credits
        blocked,    // the account may not buy
    };
    struct Purchase {
        Outcome outcome = Outcome::done;
        std::int64_t charged_credits = 0;
        std::int64_t left_credits = 0;
    };

    // The file of the accounts; opens it as openAccountsDatabase does. The catalogue outlives the shop.
    Shop(std::filesystem::path const& accountsFile, Catalogue& catalogue, WallClock clock = systemSeconds);

    [[nodiscard]] Cart cart(std::int64_t accountId);
    // Removes and then adds. What is not in the cart need not be removed, and what is there need not be
    // added. Anything but `done` leaves the cart as it was.
    [[nodiscard]] CartChange changeCart(std::int64_t accountId, std::span<std::int64_t const> remove,
                                        std::span<std::int64_t const> add);

    // Charges the credits and hands over the cart, in one transaction: after a crash at any point either
    // everything has happened or nothing.
    [[nodiscard]] Purchase buyWithCredits(std::int64_t accountId);

    // Numbers of the clips that the account owns, the latest purchase first.
    [[nodiscard]] std::vector<std::int64_t> owned(std::int64_t accountId);
    [[nodiscard]] bool owns(std::int64_t accountId, std::int64_t clipId);

private:
    [[nodiscard]] bool allKnown(std::span<std::int64_t const> ids, Catalogue::Presence presence);

    Catalogue& catalogue_;
    WallClock clock_;
    std::mutex mutex_; // guards the database
    engine::Database database_;
};

} // namespace tarn7d
