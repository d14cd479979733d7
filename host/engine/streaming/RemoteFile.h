// A remote file as the contract's file: one reader of a session.
#pragma once

#include <memory>
#include <optional>

#include "host/engine/streaming/StreamReader.h"
#include "host/engine/streaming/StreamSession.h"
#include "host/files/StreamingFile.h"

namespace engine {

// Attaches a reader to a session for the time of its scope.
class AttachedReader {
public:
    // Throws std::system_error when streaming cannot begin.
    AttachedReader(std::shared_ptr<StreamingCore> core, StreamSource const& source);
    ~AttachedReader();
    AttachedReader(AttachedReader const&) = delete;
    AttachedReader& operator=(AttachedReader const&) = delete;

    [[nodiscard]] StreamSession::Opened open(StreamSession::Retry retry) {
        return session_->open(reader_, retry);
    }
    [[nodiscard]] StreamSession::ReadResult read(std::uint64_t position, std::span<char> out) {
        return session_->read(reader_, position, out);
    }

private:
    std::shared_ptr<StreamingCore> const core_;
    StreamReader reader_;
    std::shared_ptr<StreamSession> session_;
};

class RemoteFile final : public StreamingFile {
public:
    // Begins to ask for the file. Throws std::system_error when streaming cannot begin.
    RemoteFile(std::shared_ptr<StreamingCore> const& core, StreamSource source);

    // Always false: the server's file is not the host's to change.
    bool write(void const* bytes, std::uint32_t size) override;
    // Waits for what it reads; -1 where that does not come, the task is cancelled or the file has changed
    // since it was opened. The position moves only with success.
    std::int64_t read(void* bytes, std::uint32_t size) override;
    bool setPosition(std::uint64_t position) override;
    std::uint64_t getPosition() override { return position_; }
    // Waits until the server has told it. 0 for a file that the server has not or that is empty, and where
    // the server could not be asked: lastError() tells. A later read asks anew.
    std::uint64_t getSize() override;
    iFileManager::eCopyRC saveAs(WideString const& destination, bool overwrite,
                                 iFileManager::ProgressCallback progress) override;

    // Why the last operation that failed did.
    [[nodiscard]] StreamError const& lastError() const noexcept { return error_; }

private:
    [[nodiscard]] bool ensureOpen(StreamSession::Retry retry);

    std::shared_ptr<StreamingCore> const core_;
    StreamSource const source_;
    AttachedReader reader_;
    std::uint64_t position_ = 0;
    std::optional<std::uint64_t> size_bytes_;
    bool asked_ = false;
    StreamError error_;
};

} // namespace engine
