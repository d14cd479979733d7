// Addresses of full files: whoever has one may fetch that file until it expires, without a session.
//
// An address names clip, version and end, and carries a signature over them; it says nothing of the account
// and nothing of where the file lies.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "apps/tarn7d/ClipVersion.h"
#include "apps/tarn7d/WallClock.h"

namespace tarn7d {

// Any thread.
class DownloadAddresses {
public:
    static constexpr std::string_view folder = "/full/";

    enum class Expiry { usual, past };
    struct Target {
        std::int64_t clipId = 0;
        ClipVersion version = ClipVersion::original;
        std::string extension;

        friend bool operator==(Target const&, Target const&) = default;
    };

    // Reads the secret from the file, or makes it there, readable by its owner alone: addresses stay good
    // over a restart of the service. Throws std::runtime_error when it cannot be kept.
    DownloadAddresses(std::filesystem::path const& secretFile, std::chrono::seconds lifetime,
                      WallClock clock = systemSeconds);

    // Path and query of the version's file. With Expiry::past it has expired already.
    [[nodiscard]] std::string make(Target const& target, Expiry expiry = Expiry::usual) const;

    // What the address stands for; empty when it was not made here, was changed, or has expired. `path` is
    // without the query. The time that a wrong signature takes does not tell how much of it is right.
    [[nodiscard]] std::optional<Target> check(std::string_view path, std::string_view expires,
                                              std::string_view signature) const;

private:
    [[nodiscard]] std::string sign(std::string_view path, std::string_view expires) const;

    std::string const secret_;
    std::chrono::seconds const lifetime_;
    WallClock const clock_;
};

} // namespace tarn7d
