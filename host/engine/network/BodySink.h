// Collects a whole answer in memory, up to a bound.
#pragma once

#include "host/engine/network/ResponseBody.h"
#include "host/engine/network/ResponseSink.h"
#include "host/object/Ptr.h"

namespace engine {

class BodySink final : public iResponseSink {
public:
    static constexpr std::size_t largestBody = std::size_t{64} << 20; // bytes, decoded

    [[nodiscard]] bool start(ResponseHead const& head) noexcept override;
    [[nodiscard]] bool take(std::string_view bytes) noexcept override;

    // Null when the host had no memory.
    [[nodiscard]] Zq::Ptr<ResponseBody> const& body() const noexcept { return body_; }

private:
    Zq::Ptr<ResponseBody> const body_ = Zq::makeShared<ResponseBody>();
};

} // namespace engine
