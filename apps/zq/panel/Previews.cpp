#include "apps/zq/panel/Previews.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <string_view>
#include <thread>
#include <utility>

#include "apps/zq/panel/ApiError.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/engine/streaming/RemoteFile.h"
#include "host/files/iFileManager.h"
#include "host/os/OS.h"

namespace zq::panel {

namespace {

using Counter = std::shared_ptr<std::atomic<int>>;

// One of the files that may be open.
class Place {
public:
    explicit Place(Counter counter) : counter_(std::move(counter)) {
        if (counter_->fetch_add(1) >= Previews::mostOpen) {
            counter_->fetch_sub(1);
            throw ApiError(ErrorCode::conflict, "too many previews are open", Reason::tooManyPreviews);
        }
    }
    ~Place() { counter_->fetch_sub(1); }
    Place(Place const&) = delete;
    Place& operator=(Place const&) = delete;

private:
    Counter const counter_;
};

// Why the last read of a file failed.
struct Trouble {
    Reason reason = Reason::serviceFailed;
    std::string text;
    enum class Hope {
        none,
        little, // the service answers, not as it should: a later read may succeed
        full,   // the way there is cut, or the service is away
    } hope = Hope::none;
};

Trouble troubleOf(iFile& file) {
    using Kind = engine::StreamError::Kind;
    auto const* const remote = dynamic_cast<engine::RemoteFile*>(&file);
    if (remote == nullptr) {
        return {Reason::serviceFailed, "the file cannot be read", Trouble::Hope::none};
    }
    engine::StreamError const& error = remote->lastError();
    switch (error.kind) {
    case Kind::unreachable:
        return {Reason::serviceUnreachable, error.text, Trouble::Hope::full};
    case Kind::stalled:
    case Kind::cut:
    case Kind::server:
        return {Reason::serviceFailed, error.text, Trouble::Hope::little};
    default:
        return {Reason::serviceFailed, error.text, Trouble::Hope::none};
    }
}

class FileContent final : public Content {
public:
    FileContent(std::unique_ptr<Place> place, Zq::Ptr<iFile> file, std::uint64_t size, Previews::Tell tell)
        : place_(std::move(place)), file_(std::move(file)), size_(size), tell_(std::move(tell)) {}

    [[nodiscard]] std::uint64_t size() const override { return size_; }
    [[nodiscard]] bool isLate() const override { return isLate_; }

    [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<char> bytes) override {
        if (isLate_ && !waitForNextTry()) {
            isLate_ = !engine::isTaskCancelled();
            return 0;
        }
        isLate_ = false;
        if (offset >= size_ || !file_->setPosition(offset)) {
            return 0;
        }
        std::size_t const wanted =
            std::min<std::size_t>(bytes.size(), std::numeric_limits<std::int32_t>::max());
        std::int64_t const count = file_->read(bytes.data(), static_cast<std::uint32_t>(wanted));
        if (count < 0) {
            fail(troubleOf(*file_));
            return 0;
        }
        pause_ = shortestPause;
        vainTries_ = 0;
        hasBegun_ = true;
        if (tell_) {
            tell_(Reason::none, {});
        }
        return static_cast<std::size_t>(count);
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds shortestPause{250};
    static constexpr std::chrono::milliseconds longestPause{4'000};
    static constexpr int mostVainTries = 4; // of a service that answers

    void fail(Trouble const& trouble) {
        if (engine::isTaskCancelled()) {
            return;
        }
        if (tell_) {
            tell_(trouble.reason, trouble.text);
        }
        isLate_ = trouble.hope == Trouble::Hope::full ||
                  (trouble.hope == Trouble::Hope::little && hasBegun_ && ++vainTries_ < mostVainTries);
        nextTry_ = Clock::now() + pause_;
        pause_ = std::min(pause_ * 2, longestPause);
    }

    // False where it is not time yet, after a short wait, or the reader is to end.
    [[nodiscard]] bool waitForNextTry() const {
        constexpr std::chrono::milliseconds step{50}; // between two looks at the reader
        std::this_thread::sleep_until(std::min(Clock::now() + step, nextTry_));
        return !engine::isTaskCancelled() && Clock::now() >= nextTry_;
    }

    std::unique_ptr<Place> place_; // after the file is closed
    Zq::Ptr<iFile> file_;
    std::uint64_t const size_;
    Previews::Tell const tell_;
    bool hasBegun_ = false; // bytes have come
    bool isLate_ = false;
    int vainTries_ = 0;
    std::chrono::milliseconds pause_ = shortestPause;
    Clock::time_point nextTry_;
};

// Browsers play QuickTime files whose codecs they know, but only under the name of their close relative.
std::string typeOf(std::string_view head) {
    constexpr std::string_view firstBoxes[] = {"ftyp", "moov", "mdat", "wide", "free", "skip"};
    if (head.size() >= 8 && std::ranges::find(firstBoxes, head.substr(4, 4)) != std::end(firstBoxes)) {
        return "video/mp4";
    }
    return head.starts_with("\x1a\x45\xdf\xa3") ? "video/webm" : "application/octet-stream";
}

} // namespace

Previews::Preview Previews::open(WideString const& path, Tell tell) {
    auto place = std::make_unique<Place>(open_);
    Zq::Ptr<iFile> file = path.isEmpty() ? Zq::Ptr<iFile>() : OS().fileManager().openForRead(path);
    if (!file) {
        throw ApiError(ErrorCode::notFound, "the clip has no preview", Reason::noPreview);
    }
    std::array<char, 16> head{};
    // Asked for twice where the first time fails, as while a service is still making the preview.
    static_cast<void>(file->getSize());
    std::int64_t const count = file->read(head.data(), static_cast<std::uint32_t>(head.size()));
    if (count < 0) {
        throw ApiError(ErrorCode::failed,
                       "the preview cannot be read: its server cannot be reached or refuses",
                       troubleOf(*file).reason);
    }
    std::uint64_t const size = file->getSize();
    if (size == 0) {
        throw ApiError(ErrorCode::notFound, "the server has no such preview", Reason::noPreview);
    }
    Preview preview;
    preview.type = typeOf({head.data(), static_cast<std::size_t>(count)});
    preview.content = std::make_shared<FileContent>(std::move(place), std::move(file), size, std::move(tell));
    return preview;
}

} // namespace zq::panel
