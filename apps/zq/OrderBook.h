// The orders of a home, on disk: what was sent to a service is known in a later run and to other programs of
// the same home, so that nothing is bought twice by mistake.
//
// An order is written before it is sent. Whatever ends the program then, the order is there: one whose
// program has gone without an outcome is in doubt, and the account's list of what it owns decides.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "apps/zq/buyClips.h"

namespace zq {

enum class OrderState { running, done, waiting, doubtful, refused };

// The word that documents and files have for it.
[[nodiscard]] char const* wordFor(OrderState state);

struct KeptOrder {
    std::string repository; // short name
    std::string user;       // whose account pays
    std::string key;        // made by whoever orders, once for each order of the repository
    std::vector<std::string> clips;
    Payment payment = Payment::credits;
    OrderState state = OrderState::running;
    std::optional<std::int32_t> code; // of the repository
    std::string text;                 // for a person
    std::string page;                 // where to pay; empty: none
    // The list of what is owned has still to tell of it: of each that waits or is in doubt, of one that is
    // done until the list has its clips, of one that counts as refused only since the list never had them.
    bool isAwaited = true;
    // The service has answered, with an error: it works on the order no more, and what it has done of it is
    // done. False where the answer was lost.
    bool wasEnded = false;
    std::chrono::system_clock::time_point sent{}; // whole seconds

    [[nodiscard]] bool isOpen() const {
        return state == OrderState::waiting || state == OrderState::doubtful;
    }
    // True while the same clips are not to be ordered by the same account.
    [[nodiscard]] bool blocks() const {
        return state == OrderState::running || state == OrderState::doubtful ||
               (state == OrderState::done && isAwaited);
    }
    // True for one that the list of what is owned has told of, or has not in all that time.
    [[nodiscard]] bool isListed() const { return state == OrderState::done && !isAwaited; }
    bool operator==(KeptOrder const&) const = default;
};

// The file cannot be used; the text says which and why.
class OrderBookError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Several may use one file, in one process or more. Opened at the first use, and again after a failure. All
// throw OrderBookError, and what they write is on disk when they return. Thread: any.
class OrderBook {
public:
    static constexpr std::size_t most = 1'000; // of the settled ones; the oldest go

    explicit OrderBook(std::filesystem::path file);
    ~OrderBook();
    OrderBook(OrderBook const&) = delete;
    OrderBook& operator=(OrderBook const&) = delete;

    struct Begun {
        enum class Kind {
            written, // it is running now, and may be sent
            known,   // its key was used before
            blocked, // another order of this account has one of its clips, or has bought it since `listed`
        };
        Kind kind = Kind::written;
        KeptOrder order; // the written, the known or the other one
    };
    // `listed`: newest() of the moment before the account's list of what it owns was asked for.
    [[nodiscard]] Begun begin(KeptOrder const& order, std::int64_t listed);
    // The number of the newest change; numbers rise.
    [[nodiscard]] std::int64_t newest();
    // The outcome of an order that was begun here.
    void finish(KeptOrder const& order);
    // What the list of what is owned says of one that is not running. Only what is open becomes refused;
    // false where that is not so any more, since another program was faster.
    bool settle(KeptOrder const& order);
    // For a key whose order may have been lost on the way to the program: where it is unknown it counts as
    // refused with that text from now on, and cannot be begun any more. Gives the order of that key.
    [[nodiscard]] KeptOrder withdraw(std::string const& repository, std::string const& key,
                                     std::string const& text);
    // The order that keeps one of these clips from being ordered by that account.
    [[nodiscard]] std::optional<KeptOrder> inTheWay(std::string const& repository, std::string const& user,
                                                    std::vector<std::string> const& clips);

    // What has changed since the last call, by whichever program; the first call gives all that are running,
    // open, or done without the list of what is owned having told. An order of a program that has gone is in
    // doubt from then on. The oldest in front.
    [[nodiscard]] std::vector<KeptOrder> news();

private:
    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace zq
