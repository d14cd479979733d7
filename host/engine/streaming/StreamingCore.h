// What all streamed files of one StreamingFiles share. The files keep it alive.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "host/engine/streaming/StoreCatalogue.h"
#include "host/engine/streaming/StreamingCounters.h"
#include "host/engine/streaming/StreamingOptions.h"
#include "host/engine/streaming/TransferLoop.h"

namespace engine {

class StreamSession;
struct StreamReader;
struct StreamSource;

// Thread: any.
class StreamingCore : public std::enable_shared_from_this<StreamingCore> {
public:
    // Throws std::runtime_error when libcurl cannot be used.
    StreamingCore(std::filesystem::path const& catalogue, std::uint64_t limit_bytes, StreamingOptions chosen)
        : options(std::move(chosen)), stores(catalogue, limit_bytes), loop(options, counters) {}

    // The session of that source and store, made where none is open, with the reader attached. Throws
    // std::system_error when the loop does not begin.
    [[nodiscard]] std::shared_ptr<StreamSession> open(StreamSource source, StreamReader& reader);
    // Detaches the reader, and ends the session with its last one.
    void close(std::shared_ptr<StreamSession> const& session, StreamReader& reader);
    // Ends all requests. Whoever waits for bytes fails, and so does every later read.
    void end() noexcept;

    // Whether a file was seen to keep its index in front; of the files that were opened last.
    void rememberIndexInFront(std::string const& identity);
    [[nodiscard]] bool isIndexInFront(std::string const& identity);

    StreamingOptions const options;
    StreamingCounters counters;
    StoreCatalogue stores;
    TransferLoop loop;
    std::atomic<bool> ended{false};

private:
    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<StreamSession>> sessions_; // of files with a store on disk
    std::mutex layoutMutex_;
    std::set<std::string> indexInFront_;
};

} // namespace engine
