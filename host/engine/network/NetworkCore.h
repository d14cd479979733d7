// What all servers of one network share. They keep it alive, so a server may outlive the network that made
// it.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "host/engine/network/Connector.h"
#include "host/engine/network/HandlePool.h"
#include "host/engine/network/ServerStatistics.h"
#include "host/engine/network/SmallFiles.h"
#include "host/object/Ptr.h"

namespace engine {

// Thread: any.
class NetworkCore final : public virtual iObject {
public:
    explicit NetworkCore(NetworkSettings settings) : connector(std::move(settings)), pool(connector) {}

    Connector const connector;
    HandlePool pool;
    StatisticsTable statistics;

    // Small files' kept connections, for one user at a time; another gets connections of its own.
    [[nodiscard]] std::unique_ptr<SmallFiles> takeSmallFiles() {
        std::lock_guard const lock(mutex_);
        return smallFiles_ ? std::move(smallFiles_) : std::make_unique<SmallFiles>(connector, statistics);
    }
    void giveBack(std::unique_ptr<SmallFiles> files) noexcept {
        std::lock_guard const lock(mutex_);
        smallFiles_.swap(files);
    }

private:
    std::mutex mutex_;
    std::unique_ptr<SmallFiles> smallFiles_; // after what it uses: it ends first
};

} // namespace engine
