#include "host/engine/streaming/RemoteFile.h"

#include <algorithm>

#include "host/engine/files/LocalPath.h"
#include "host/engine/streaming/saveRemoteFile.h"
#include "host/log/Log.h"

namespace engine {

AttachedReader::AttachedReader(std::shared_ptr<StreamingCore> core, StreamSource const& source)
    : core_(std::move(core)), session_(core_->open(source, reader_)) {}

AttachedReader::~AttachedReader() {
    try {
        core_->close(session_, reader_);
    } catch (std::exception const& failure) {
        Log("A streamed file could not be closed: %s", failure.what());
    }
}

RemoteFile::RemoteFile(std::shared_ptr<StreamingCore> const& core, StreamSource source)
    : core_(core), source_(std::move(source)), reader_(core_, source_) {}

bool RemoteFile::write(void const*, std::uint32_t) {
    return false;
}

bool RemoteFile::ensureOpen(StreamSession::Retry retry) {
    if (size_bytes_) {
        return true;
    }
    StreamSession::Opened opened = reader_.open(retry);
    if (opened.error) {
        asked_ = true;
        error_ = std::move(opened.error);
        return false;
    }
    size_bytes_ = opened.size_bytes;
    return true;
}

std::uint64_t RemoteFile::getSize() {
    try {
        return ensureOpen(StreamSession::Retry::never) ? *size_bytes_ : 0;
    } catch (std::exception const& failure) {
        Log("A remote file cannot be asked for: %s", failure.what());
        return 0;
    }
}

bool RemoteFile::setPosition(std::uint64_t position) {
    if (position > getSize()) {
        return false;
    }
    position_ = position;
    return true;
}

std::int64_t RemoteFile::read(void* bytes, std::uint32_t size) {
    try {
        if (!ensureOpen(asked_ ? StreamSession::Retry::once : StreamSession::Retry::never)) {
            return -1;
        }
        std::uint64_t const count = std::min<std::uint64_t>(size, *size_bytes_ - position_);
        if (count == 0) {
            return 0;
        }
        StreamSession::ReadResult result =
            reader_.read(position_, {static_cast<char*>(bytes), static_cast<std::size_t>(count)});
        if (result.error) {
            error_ = std::move(result.error);
            return -1;
        }
        position_ += result.count;
        return static_cast<std::int64_t>(result.count);
    } catch (std::exception const& failure) {
        Log("A remote file cannot be read: %s", failure.what());
        return -1;
    }
}

iFileManager::eCopyRC RemoteFile::saveAs(WideString const& destination, bool overwrite,
                                         iFileManager::ProgressCallback progress) {
    try {
        return saveRemoteFile(core_, source_, localPath(destination), overwrite, progress);
    } catch (std::exception const& failure) {
        Log("A remote file cannot be saved: %s", failure.what());
        return iFileManager::eTransferFailed;
    }
}

} // namespace engine
