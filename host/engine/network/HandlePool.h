// Transfers at rest with their kept connections, to be used again by whoever next speaks to the same server.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/engine/network/Transfer.h"

namespace engine {

// Thread: any.
class HandlePool {
public:
    // The connector outlives the pool.
    explicit HandlePool(Connector const& connector) noexcept : connector_(connector) {}

    // A transfer for the time of its scope; outlived by the pool.
    class Lease {
    public:
        Lease(HandlePool& pool, std::string key, std::unique_ptr<Transfer> transfer) noexcept;
        Lease(Lease const&) = delete;
        Lease& operator=(Lease const&) = delete;
        ~Lease();
        Transfer* operator->() const noexcept { return transfer_.get(); }

    private:
        HandlePool& pool_;
        std::string key_;
        std::unique_ptr<Transfer> transfer_;
    };

    // The transfer of that server and kind that rested last, since its connection is the likeliest to be open
    // still; a new one where none rests. Throws std::runtime_error.
    [[nodiscard]] Lease lease(ServerAddress const& server, TransferKind kind);

private:
    struct Resting {
        std::string key;
        std::unique_ptr<Transfer> transfer;
    };
    void giveBack(std::string key, std::unique_ptr<Transfer> transfer) noexcept;

    Connector const& connector_;
    std::mutex mutex_;
    std::vector<Resting> resting_; // in the order in which they came to rest
};

} // namespace engine
