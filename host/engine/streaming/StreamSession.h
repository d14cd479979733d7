// A remote file that is open: what is known of it, its store, its requests and its readers.
//
// Readers of one store in this process share one session. It learns what the file is from the first answers,
// asks for the parts that its readers wait for, and notices when another file takes its name. From then on
// its generation is another one, and a reader of the earlier one gets no byte any more.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/engine/network/CurlHTTPServer.h"
#include "host/engine/streaming/BlockStore.h"
#include "host/engine/streaming/RangeJob.h"
#include "host/engine/streaming/StreamReader.h"
#include "host/engine/streaming/StreamingCore.h"

namespace engine {

// What a session reads, and where it keeps it.
struct StreamSource {
    Zq::Ptr<CurlHTTPServer> server;
    std::string url;
    std::string remoteName;          // without what signs an address
    std::string identity;            // digest of server and path
    std::filesystem::path cachePath; // empty: in memory

    // Nothing for a server of another kind and for an empty name.
    [[nodiscard]] static std::optional<StreamSource>
    of(Zq::Ptr<iHTTPServer> const& server, WideString const& remoteName, std::filesystem::path cachePath);
};

// Shared by its readers' threads and the loop, whichever lets go last: hence std::shared_ptr.
class StreamSession final : public iRangeClient, public std::enable_shared_from_this<StreamSession> {
public:
    enum class Retry {
        never, // what is known of the file counts, also that it could not be asked for
        once,  // a file that could not be asked for is asked for anew
    };
    struct Opened {
        std::uint64_t size_bytes = 0;
        bool isMissing = false; // the server says that there is no such file
        StreamError error;
    };
    struct ReadResult {
        std::size_t count = 0;
        StreamError error;
    };

    StreamSession(StreamSource source, std::shared_ptr<StreamingCore> core);

    // Thread: any, for these. A reader is attached while it reads; the first one has the file asked for.
    // Throws std::system_error when the loop does not begin.
    void attach(StreamReader& reader);
    // True when it was the last one: the session has then closed its store, and is of no more use.
    [[nodiscard]] bool detach(StreamReader& reader);
    // Waits until the file's size is known. A reader stays with the file that it first learns of. Cancelled
    // with the calling task.
    [[nodiscard]] Opened open(StreamReader& reader, Retry retry);
    // Waits for all bytes, which lie within the file. Cancelled with the calling task.
    [[nodiscard]] ReadResult read(StreamReader& reader, std::uint64_t position, std::span<char> out);

    // Thread: the loop's.
    [[nodiscard]] CurlHTTPServer& server() noexcept override { return *source_.server; }
    [[nodiscard]] Plan plan(std::size_t room) override;
    [[nodiscard]] Verdict answered(RangeJob& job, RangeAnswer const& answer) override;
    [[nodiscard]] Flow received(RangeJob& job, std::string_view bytes) override;
    void finished(RangeJob& job, StreamError const& error) override;

private:
    enum class Phase {
        idle,     // nothing is known; `error_` may tell why
        probing,  // the file is asked for
        checking, // what the store holds is compared with the server
        open,     // the size is known
        missing,  // the server says that it is not there
    };
    using Lock = std::unique_lock<std::mutex>;

    // All of these under the mutex.
    void beginAsking();
    void beginProbing() noexcept;
    [[nodiscard]] bool takeKept();
    void adopt(ContentState const& content);
    void openStore();
    void useMemory();
    void noteValidation();
    void change(char const* reason);
    void goMissing();
    void fail(StreamError error);
    void closeStore();
    void wakeLoop();

    [[nodiscard]] StreamError waitABit(Lock& lock);
    [[nodiscard]] bool isThere(std::uint64_t position);
    [[nodiscard]] bool comesWithTheProbe(std::uint64_t position) const;
    [[nodiscard]] std::size_t takeArriving(std::uint64_t position, std::span<char> out) const;

    [[nodiscard]] bool isRunning(RangeJob::Kind kind) const;
    RangeJob& add(Plan& plan, RangeJob::Kind kind, ByteRange asked);
    void leaveUseless(Plan& plan);
    void planProbe(Plan& plan, std::size_t room);
    void planCheck(Plan& plan, std::size_t room);
    void planParts(Plan& plan, std::size_t room);
    void planStream(Plan& plan, std::size_t room);
    void leave(Plan& plan, RangeJob const& job);
    [[nodiscard]] bool runsTooFarAhead(RangeJob const& job) const;
    [[nodiscard]] bool hasPassedAReader(RangeJob const& job);

    [[nodiscard]] Verdict refuse(RangeJob& job, StreamError fault, Verdict verdict) const;
    [[nodiscard]] Verdict take(RangeJob& job, ByteRange range);
    [[nodiscard]] Verdict answeredHead(RangeJob& job, RangeAnswer const& answer);
    [[nodiscard]] Verdict answeredTail(RangeJob& job, RangeAnswer const& answer);
    [[nodiscard]] Verdict answeredPart(RangeJob& job, RangeAnswer const& answer);
    [[nodiscard]] Verdict answeredStream(RangeJob& job, RangeAnswer const& answer);
    [[nodiscard]] Verdict answeredCheck(RangeJob& job, RangeAnswer const& answer);
    [[nodiscard]] Verdict learn(RangeJob& job, RangeAnswer const& answer, ContentState const& content,
                                ByteRange range);
    void keepBlock(RangeJob& job, std::uint64_t block);
    void takeEdge(RangeJob const& job, ByteRange place);
    void storeBlock(std::uint64_t block, std::string_view bytes);
    void finishProbe();
    void finishCheck(StreamError const& error);
    void failReaders(RangeJob const& job, StreamError const& error);

    StreamSource const source_;
    std::shared_ptr<StreamingCore> const core_;

    std::mutex mutex_;
    std::condition_variable changed_;
    Phase phase_ = Phase::idle;
    StreamError error_;
    std::uint64_t generation_ = 1;
    int attempts_ = 0;          // of the running probe
    bool withoutRange_ = false; // the server refused to be asked for a part
    StreamError probeError_;
    bool checkPending_ = false;
    bool retired_ = false;
    StoreHeader head_;
    std::shared_ptr<iBlockStore> store_; // a reader may read from it while the session moves on
    std::uint64_t edgeBegin_ = 0;        // bytes in front of the tail's first whole block
    std::string edge_;
    std::vector<std::unique_ptr<RangeJob>> jobs_;
    std::vector<StreamReader*> readers_;
};

} // namespace engine
