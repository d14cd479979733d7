#include "host/engine/network/BodySink.h"

#include <algorithm>

namespace engine {

namespace {

// An announcement is believed up to here; a longer body makes its buffer grow as it comes.
constexpr std::uint64_t largestReservation = std::uint64_t{4} << 20;

} // namespace

bool BodySink::start(ResponseHead const& head) noexcept {
    if (!body_ || (!head.encoded && head.length > std::uint64_t{largestBody})) {
        return false;
    }
    return body_->reserve(static_cast<std::size_t>(std::min(head.length.value_or(0), largestReservation)));
}

bool BodySink::take(std::string_view bytes) noexcept {
    return bytes.size() <= largestBody - body_->getSize() && body_->append(bytes);
}

} // namespace engine
