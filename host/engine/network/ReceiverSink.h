// Hands an answer of status 200 to a data receiver, in blocks.
#pragma once

#include <chrono>

#include "host/engine/files/FileTransfer.h"
#include "host/engine/network/ResponseBody.h"
#include "host/engine/network/ResponseSink.h"
#include "host/network/iHTTPServer.h"

namespace engine {

class ReceiverSink final : public iResponseSink {
public:
    explicit ReceiverSink(iHTTPServer::iDataReceiver& receiver) noexcept : receiver_(receiver) {}

    [[nodiscard]] bool start(ResponseHead const& head) noexcept override;
    [[nodiscard]] bool take(std::string_view bytes) noexcept override;
    [[nodiscard]] bool pause() noexcept override;

    // Ends the transfer toward the receiver. `whole`: everything that was announced has arrived; what is left
    // over is then handed on first. True when the receiver took all of it, and files that it wrote are on
    // disk.
    [[nodiscard]] bool finish(bool whole) noexcept;

private:
    [[nodiscard]] bool deliver() noexcept;

    iHTTPServer::iDataReceiver& receiver_;
    Zq::Ptr<FileTransfer> transfer_; // while the receiver is told of it
    Zq::Ptr<ResponseBody> block_;
    std::uint64_t delivered_ = 0;
    std::uint64_t discarded_ = 0;
    std::chrono::steady_clock::time_point lastDelivery_;
};

} // namespace engine
