// How often the user has done what, since the host started.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/edit/UIStateManager.h"

namespace engine {

// Thread: any.
class ActionCounts final : public iActionRecord {
public:
    void recordAction(eUIActionType action) override {
        if (action == eUIActionType::downloadMedia) {
            ++downloads_;
        }
    }
    [[nodiscard]] std::uint64_t downloads() const noexcept { return downloads_; }

private:
    std::atomic<std::uint64_t> downloads_{0};
};

} // namespace engine
