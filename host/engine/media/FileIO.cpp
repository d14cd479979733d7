#include "host/engine/media/FileIO.h"

#include <cstdio>
#include <new>

#include "host/engine/os/isTaskCancelled.h"

namespace engine {

namespace {

// As large as a block of a streaming file: more would fetch what nobody asked for, at every jump.
constexpr int buffer_bytes = 32 * 1024;

} // namespace

FileIO::FileIO(Zq::Ptr<iFile> file) : file_(std::move(file)) {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(buffer_bytes));
    if (buffer == nullptr) {
        throw std::bad_alloc();
    }
    context_.reset(avio_alloc_context(buffer, buffer_bytes, 0, this, read, nullptr, seek));
    if (context_ == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    context_->seekable = AVIO_SEEKABLE_NORMAL;
}

AVIOInterruptCB FileIO::interruption() noexcept {
    AVIOInterruptCB callback{};
    callback.callback = [](void*) { return isTaskCancelled() ? 1 : 0; };
    return callback;
}

void FileIO::forgetFailure() noexcept {
    failed_ = false;
    context_->error = 0;
}

int FileIO::read(void* self, std::uint8_t* bytes, int size) noexcept {
    try {
        return static_cast<FileIO*>(self)->readBytes(bytes, size);
    } catch (...) {
        return AVERROR(EIO);
    }
}

std::int64_t FileIO::seek(void* self, std::int64_t offset, int whence) noexcept {
    try {
        return static_cast<FileIO*>(self)->seekTo(offset, whence);
    } catch (...) {
        return AVERROR(EIO);
    }
}

int FileIO::readBytes(std::uint8_t* bytes, int size) {
    if (isTaskCancelled()) {
        return AVERROR_EXIT;
    }
    std::int64_t const got = file_->read(bytes, static_cast<std::uint32_t>(size));
    if (got < 0) {
        failed_ = true;
        return isTaskCancelled() ? AVERROR_EXIT : AVERROR(EIO);
    }
    return got == 0 ? AVERROR_EOF : static_cast<int>(got);
}

std::int64_t FileIO::seekTo(std::int64_t offset, int whence) {
    auto const size = static_cast<std::int64_t>(file_->getSize());
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return size;
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += static_cast<std::int64_t>(file_->getPosition());
        break;
    case SEEK_END:
        offset += size;
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < 0) {
        return AVERROR(EINVAL);
    }
    // An index that points behind the end belongs to a file that was cut short: its media end here.
    return file_->setPosition(static_cast<std::uint64_t>(offset)) ? offset : AVERROR_EOF;
}

} // namespace engine
