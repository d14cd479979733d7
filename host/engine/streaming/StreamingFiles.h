// The engine's streaming files: remote files read by ranges over libcurl, with a checked store on disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "host/engine/streaming/StreamingOptions.h"
#include "host/files/StreamingFile.h"

namespace engine {

// What streaming has cost so far, over all files of one StreamingFiles.
struct StreamingStatistics {
    std::uint64_t opens = 0;
    std::uint64_t requests = 0;       // ranges and probes that were sent
    std::uint64_t bytesReceived = 0;  // of media, over the network
    std::uint64_t bytesRead = 0;      // handed to readers
    std::uint64_t bytesFromStore = 0; // of those, found in the store
};

// Thread: any.
class StreamingFiles final : public iStreamingFiles {
public:
    // Keeps the catalogue of its stores in `catalogue`, a SQLite file, and what they hold together within the
    // limit: the one that was used longest ago goes first, one that is open never. Throws std::runtime_error
    // when libcurl cannot be used.
    StreamingFiles(std::filesystem::path const& catalogue, std::uint64_t limit_bytes,
                   StreamingOptions options = {});
    // As end().
    ~StreamingFiles() override;

    // Null for a server that the engine did not make, for an empty name, and without memory or a thread.
    [[nodiscard]] Zq::Ptr<StreamingFile> create(Zq::Ptr<iHTTPServer> const& server,
                                                WideString const& remoteName, WideString source,
                                                WideString const& cachePath) override;

    // Ends all requests and waits until they have ended: no thread of its own uses the host from then on.
    // Files that are still held fail.
    void end() noexcept;

    [[nodiscard]] StreamingStatistics statistics() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace engine
