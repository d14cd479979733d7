#include "host/engine/streaming/StreamingFiles.h"

#include <utility>

#include "host/engine/files/LocalPath.h"
#include "host/engine/streaming/RemoteFile.h"
#include "host/engine/streaming/StreamingCore.h"
#include "host/log/Log.h"

namespace engine {

class StreamingFiles::Implementation {
public:
    Implementation(std::filesystem::path const& catalogue, std::uint64_t limit_bytes,
                   StreamingOptions options)
        : core(std::make_shared<StreamingCore>(catalogue, limit_bytes, std::move(options))) {}
    ~Implementation() { core->end(); }
    Implementation(Implementation const&) = delete;
    Implementation& operator=(Implementation const&) = delete;

    std::shared_ptr<StreamingCore> const core; // files may outlive this object
};

StreamingFiles::StreamingFiles(std::filesystem::path const& catalogue, std::uint64_t limit_bytes,
                               StreamingOptions options)
    : implementation_(std::make_unique<Implementation>(catalogue, limit_bytes, std::move(options))) {}

StreamingFiles::~StreamingFiles() = default;

void StreamingFiles::end() noexcept {
    implementation_->core->end();
}

Zq::Ptr<StreamingFile> StreamingFiles::create(Zq::Ptr<iHTTPServer> const& server,
                                              WideString const& remoteName, WideString,
                                              WideString const& cachePath) {
    try {
        std::optional<StreamSource> source = StreamSource::of(server, remoteName, localPath(cachePath));
        return source ? Zq::makeShared<RemoteFile>(implementation_->core, std::move(*source))
                      : Zq::Ptr<RemoteFile>();
    } catch (std::exception const& failure) {
        Log("A remote file cannot be opened: %s", failure.what());
        return {};
    }
}

StreamingStatistics StreamingFiles::statistics() const {
    StreamingCounters const& counters = implementation_->core->counters;
    return {counters.opens, counters.requests, counters.bytesReceived, counters.bytesRead,
            counters.bytesFromStore};
}

} // namespace engine
