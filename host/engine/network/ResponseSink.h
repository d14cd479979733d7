// Where the answer to one request goes.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace engine {

struct ResponseHead {
    int status = 0;
    std::optional<std::uint64_t> length; // announced bytes of the body, before decoding
    bool encoded = false;                // the body has a content encoding
    bool redirects = false;              // names another address in place of an answer
};

// Called on the thread that runs the transfer, in the order start, take. False from any of them ends the
// transfer; no exception leaves them.
class iResponseSink {
public:
    virtual ~iResponseSink() = default;
    // Once, before the first byte of the body, or at the end of an answer without a body.
    [[nodiscard]] virtual bool start(ResponseHead const& head) noexcept = 0;
    [[nodiscard]] virtual bool take(std::string_view bytes) noexcept = 0;
    // A moment in which nothing arrives.
    [[nodiscard]] virtual bool pause() noexcept { return true; }
};

} // namespace engine
