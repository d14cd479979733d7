#include "host/engine/network/ReceiverSink.h"

#include <algorithm>
#include <utility>

#include "host/engine/network/BodySink.h"

namespace engine {

namespace {

// Large enough that a write of one costs little, small enough to stay in a cache on its way.
constexpr std::size_t blockSize = std::size_t{256} << 10;

// On a slow line a block is handed on before it is full, so that whoever watches sees it move.
constexpr std::chrono::milliseconds longestWait{500};

constexpr int ok = 200;

} // namespace

bool ReceiverSink::start(ResponseHead const& head) noexcept {
    if (head.status != ok) {
        return true;
    }
    if (head.encoded) {
        return false; // other bytes than the file's
    }
    try {
        std::uint64_t const length = head.length.value_or(0);
        transfer_ = Zq::makeShared<FileTransfer>(length);
        lastDelivery_ = std::chrono::steady_clock::now();
        if (!transfer_) {
            return false;
        }
        FileTransfer::Scope const scope(transfer_);
        return receiver_.beginReceive(length);
    } catch (...) {
        return false;
    }
}

bool ReceiverSink::take(std::string_view bytes) noexcept {
    if (!transfer_) {
        discarded_ += bytes.size();
        return discarded_ <= BodySink::largestBody;
    }
    while (!bytes.empty()) {
        if (!block_) {
            block_ = Zq::makeShared<ResponseBody>();
            if (!block_ || !block_->reserve(blockSize)) {
                return false;
            }
        }
        std::size_t const count = std::min(bytes.size(), blockSize - block_->getSize());
        if (!block_->append(bytes.substr(0, count))) {
            return false;
        }
        bytes.remove_prefix(count);
        if (block_->getSize() == blockSize && !deliver()) {
            return false;
        }
    }
    return true;
}

bool ReceiverSink::pause() noexcept {
    bool const waits = block_ && block_->getSize() != 0;
    return !waits || std::chrono::steady_clock::now() - lastDelivery_ < longestWait || deliver();
}

bool ReceiverSink::deliver() noexcept {
    try {
        if (!receiver_.receiveData(delivered_, block_)) {
            return false;
        }
    } catch (...) {
        return false;
    }
    delivered_ += block_->getSize();
    lastDelivery_ = std::chrono::steady_clock::now();
    // A receiver that is done with the block leaves its buffer for the next one.
    if (block_->refCount().owners.load(std::memory_order_acquire) == 1) {
        block_->clear();
    } else {
        block_.reset();
    }
    return true;
}

bool ReceiverSink::finish(bool whole) noexcept {
    if (!transfer_) {
        return whole;
    }
    Zq::Ptr<FileTransfer> const transfer = std::move(transfer_);
    bool taken = whole && (!block_ || block_->getSize() == 0 || deliver());
    try {
        receiver_.endReceive();
    } catch (...) {
        taken = false;
    }
    return transfer->end(taken);
}

} // namespace engine
