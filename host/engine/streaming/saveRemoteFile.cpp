#include "host/engine/streaming/saveRemoteFile.h"

#include <algorithm>
#include <vector>

#include <unistd.h>

#include "host/engine/files/ReplacementFile.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/engine/streaming/RemoteFile.h"

namespace engine {

namespace {

constexpr std::size_t step_bytes = std::size_t{1} << 20;

struct Outcome {
    iFileManager::eCopyRC code = iFileManager::eCopied;
    bool fileChanged = false;
};

Outcome failed(StreamError const& error, iFileManager::eCopyRC code) {
    return {error.kind == StreamError::Kind::cancelled ? iFileManager::eCancelled : code,
            error.kind == StreamError::Kind::changed};
}

Outcome transfer(std::shared_ptr<StreamingCore> const& core, StreamSource const& source,
                 ReplacementFile const& replacement, iFileManager::ProgressCallback progress) {
    AttachedReader reader(core, source);
    StreamSession::Opened const opened = reader.open(StreamSession::Retry::never);
    if (opened.error) {
        return failed(opened.error, iFileManager::eSourceNotOpened);
    }
    if (opened.isMissing) {
        return {iFileManager::eSourceNotOpened, false};
    }
    std::vector<char> bytes(step_bytes);
    for (std::uint64_t done = 0; done < opened.size_bytes;) {
        std::size_t const step =
            static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), opened.size_bytes - done));
        StreamSession::ReadResult const result = reader.read(done, {bytes.data(), step});
        if (result.error) {
            return failed(result.error, iFileManager::eTransferFailed);
        }
        if (!replacement.file().writeAll(bytes.data(), step)) {
            return {iFileManager::eDestinationNotWritten, false};
        }
        done += step;
        if (progress.function != nullptr) {
            progress.function(progress.context, done, opened.size_bytes);
        }
        if (isTaskCancelled()) {
            return {iFileManager::eCancelled, false};
        }
    }
    return {};
}

} // namespace

iFileManager::eCopyRC saveRemoteFile(std::shared_ptr<StreamingCore> const& core, StreamSource const& source,
                                     std::filesystem::path const& destination, bool overwrite,
                                     iFileManager::ProgressCallback progress) {
    if (destination.empty() || (!overwrite && ::access(destination.c_str(), F_OK) == 0)) {
        return iFileManager::eDestinationNotWritten;
    }
    ReplacementFile const replacement(destination);
    if (!replacement.file()) {
        return iFileManager::eDestinationNotWritten;
    }
    Outcome outcome = transfer(core, source, replacement, progress);
    if (outcome.fileChanged) {
        if (!replacement.startAnew()) {
            return iFileManager::eDestinationNotWritten;
        }
        outcome = transfer(core, source, replacement, progress);
    }
    if (outcome.code != iFileManager::eCopied) {
        return outcome.code;
    }
    return replacement.become(destination, overwrite) ? iFileManager::eCopied
                                                      : iFileManager::eDestinationNotWritten;
}

} // namespace engine
