// A stretch of network on loopback: what goes through arrives later, and no faster than the link is wide.
//
// Models the round trips that a distance costs, one of them for the connection itself, and a link that all
// connections share. It loses nothing.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/engine/files/FileDescriptor.h"

namespace bench {

struct Link {
    std::chrono::microseconds oneWay{20'000};
    std::uint64_t bits_per_s = 200'000'000; // each way; 0: no limit
    // What a sender has under way at first, before the other side confirms anything; it doubles with each
    // round trip and halves with each pause. 0: as much as the link takes from the first byte on.
    std::size_t firstWindow_bytes = 0;
};

// Relays until the process ends, and is not destroyed before.
class DelayRelay {
public:
    // To that port of loopback. Throws std::runtime_error.
    DelayRelay(std::uint16_t target, Link const& link);
    DelayRelay(DelayRelay const&) = delete;
    DelayRelay& operator=(DelayRelay const&) = delete;

    [[nodiscard]] std::uint16_t port() const noexcept { return port_; }

private:
    class Wire;
    void acceptAll() const;

    std::uint16_t const target_;
    Link const link_;
    std::shared_ptr<Wire> const toServer_;
    std::shared_ptr<Wire> const toClient_;
    std::uint16_t port_ = 0; // set while listener_ is made
    engine::FileDescriptor const listener_;
};

} // namespace bench
