#include "host/engine/network/HandlePool.h"

#include <algorithm>
#include <utility>

namespace engine {

namespace {

constexpr std::size_t mostResting = 16;
constexpr std::ptrdiff_t mostRestingForOneKey = 4;

} // namespace

HandlePool::Lease::Lease(HandlePool& pool, std::string key, std::unique_ptr<Transfer> transfer) noexcept
    : pool_(pool), key_(std::move(key)), transfer_(std::move(transfer)) {}

HandlePool::Lease::~Lease() {
    pool_.giveBack(std::move(key_), std::move(transfer_));
}

HandlePool::Lease HandlePool::lease(ServerAddress const& server, TransferKind kind) {
    std::string key = server.origin() + (kind == TransferKind::bulk ? " bulk" : "");
    {
        std::lock_guard const lock(mutex_);
        auto const found = std::find_if(resting_.rbegin(), resting_.rend(),
                                        [&key](Resting const& resting) { return resting.key == key; });
        if (found != resting_.rend()) {
            std::unique_ptr<Transfer> transfer = std::move(found->transfer);
            resting_.erase(std::next(found).base());
            return Lease(*this, std::move(key), std::move(transfer));
        }
    }
    return Lease(*this, std::move(key), std::make_unique<Transfer>(connector_, kind));
}

void HandlePool::giveBack(std::string key, std::unique_ptr<Transfer> transfer) noexcept {
    Resting leaving; // closing a connection takes time: not under the lock
    try {
        std::lock_guard const lock(mutex_);
        auto const same = [&key](Resting const& resting) { return resting.key == key; };
        auto oldest = resting_.end();
        if (std::ranges::count_if(resting_, same) >= mostRestingForOneKey) {
            oldest = std::ranges::find_if(resting_, same);
        } else if (resting_.size() >= mostResting) {
            oldest = resting_.begin();
        }
        if (oldest != resting_.end()) {
            leaving = std::move(*oldest);
            resting_.erase(oldest);
        }
        resting_.push_back({std::move(key), std::move(transfer)});
    } catch (std::bad_alloc const&) {
        // Without memory to keep it in the transfer ends here.
    }
}

} // namespace engine
