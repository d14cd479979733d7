#include "apps/zq/panel/Previews.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "apps/zq/panel/ApiError.h"
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

class FileContent final : public Content {
public:
    FileContent(std::unique_ptr<Place> place, Zq::Ptr<iFile> file, std::uint64_t size)
        : place_(std::move(place)), file_(std::move(file)), size_(size) {}

    [[nodiscard]] std::uint64_t size() const override { return size_; }

    [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<char> bytes) override {
        if (offset >= size_ || !file_->setPosition(offset)) {
            return 0;
        }
        std::size_t const wanted =
            std::min<std::size_t>(bytes.size(), std::numeric_limits<std::int32_t>::max());
        std::int64_t const count = file_->read(bytes.data(), static_cast<std::uint32_t>(wanted));
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    }

private:
    std::unique_ptr<Place> place_; // after the file is closed
    Zq::Ptr<iFile> file_;
    std::uint64_t const size_;
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

Previews::Preview Previews::open(WideString const& path) {
    auto place = std::make_unique<Place>(open_);
    Zq::Ptr<iFile> file = path.isEmpty() ? Zq::Ptr<iFile>() : OS().fileManager().openForRead(path);
    if (!file) {
        throw ApiError(ErrorCode::notFound, "the clip has no preview", Reason::noPreview);
    }
    std::array<char, 16> head{};
    std::uint64_t const size = file->getSize();
    std::int64_t const count = file->read(head.data(), static_cast<std::uint32_t>(head.size()));
    if (count < 0) {
        throw ApiError(ErrorCode::failed,
                       "the preview cannot be read: its server cannot be reached or refuses",
                       Reason::serviceFailed);
    }
    if (size == 0) {
        throw ApiError(ErrorCode::notFound, "the server has no such preview", Reason::noPreview);
    }
    Preview preview;
    preview.type = typeOf({head.data(), static_cast<std::size_t>(count)});
    preview.content = std::make_shared<FileContent>(std::move(place), std::move(file), size);
    return preview;
}

} // namespace zq::panel
