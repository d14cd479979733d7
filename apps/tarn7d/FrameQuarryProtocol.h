// The FrameQuarry protocol between a request's query and the answer's JSON: signed searches of the same
// catalogue. No transport here.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>

#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/DownloadAddresses.h"
#include "apps/tarn7d/WallClock.h"

namespace tarn7d {

// Why a request is refused, in the order in which it is looked at.
enum class FrameQuarryRefusal { badRequest, badKey, badTime, expired, badSignature, internal };

struct FrameQuarryRefusalRow {
    FrameQuarryRefusal refusal;
    std::string_view code;    // in the answer
    std::string_view message; // for a person
};

// All refusals, each once, in their order.
[[nodiscard]] std::span<FrameQuarryRefusalRow const> frameQuarryRefusals();

// Any thread.
class FrameQuarryProtocol {
public:
    static constexpr std::string_view searchPath = "/api/v1/stock-items/search/";
    // How far the time of a request may lie from the service's clock, on either side.
    static constexpr std::chrono::seconds tolerance{300};

    // The catalogue outlives the protocol. `server` is scheme and name of the server in the addresses of
    // thumbnails and previews, without a "/" at its end.
    FrameQuarryProtocol(Catalogue& catalogue, std::string server, WallClock clock = systemSeconds);

    // The answer to a search with this query, percent-encoded and without the "?": always an answer, as JSON
    // in UTF-8, whatever the query holds. Does not throw for anything but lack of memory. With Expiry::past
    // the time of every request has passed.
    [[nodiscard]] std::string
    answerSearch(std::string_view query,
                 DownloadAddresses::Expiry expiry = DownloadAddresses::Expiry::usual) const;

private:
    Catalogue& catalogue_;
    std::string const server_;
    WallClock const clock_;
};

} // namespace tarn7d
