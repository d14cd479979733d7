// Requests of the FrameQuarry protocol as a client makes them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace test {

// The parameters of a search; a test spoils those that it is about.
struct FrameQuarryRequest {
    explicit FrameQuarryRequest(std::int64_t time);

    // All six parameters, percent-encoded.
    [[nodiscard]] std::string query() const;

    std::string keywords;
    std::string page = "1";
    std::string pageSize = "50";
    std::string key; // the right one
    std::string time;
    std::string signature; // of this time
};

// HMAC-SHA-256 of the search's path at that time.
[[nodiscard]] std::string frameQuarrySignature(std::string_view time);

} // namespace test
