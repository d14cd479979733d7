// Identities of host objects.
#pragma once

#include <array>
#include <compare>
#include <cstdint>

namespace Zq {

struct UUID {
    std::array<std::uint8_t, 16> bytes{};
    [[nodiscard]] auto operator<=>(UUID const&) const = default;
};

} // namespace Zq

// Identity of a host object: a UUID and three bytes. The default is the null identity.
struct Cookie {
    Zq::UUID uuid;
    std::array<std::uint8_t, 3> kind{};
    [[nodiscard]] bool isNull() const noexcept { return *this == Cookie(); }
    [[nodiscard]] auto operator<=>(Cookie const&) const = default;
};

// Stamp of a thing in the host's lists; 0 is no stamp.
struct IdStamp {
    std::uint64_t value = 0;
    [[nodiscard]] auto operator<=>(IdStamp const&) const = default;
};
