// One request of a remote file, from the plan to its last byte; and the two who deal with it: the file that
// wants it, and the loop that has it done.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/engine/network/CurlHTTPServer.h"
#include "host/engine/streaming/ByteRange.h"
#include "host/engine/streaming/RangeAnswer.h"
#include "host/engine/streaming/StreamError.h"

namespace engine {

struct RangeJob {
    enum class Kind {
        head,   // the beginning of a file of which nothing is known
        tail,   // its end
        range,  // a part
        check,  // whether it is the file that is known
        stream, // all of it, from a server that gives no parts
    };

    Kind kind = Kind::range;
    ByteRange asked;                  // a tail's place is unknown until it is answered
    std::uint64_t generation = 0;     // of the file, when it was planned
    std::vector<std::string> headers; // lines of the request
    std::string url;

    bool answered = false;         // bytes of the file come; the next members hold
    std::uint64_t cursor = 0;      // of the next byte
    std::uint64_t end = 0;         // behind the last one
    std::uint64_t heldFrom = 0;    // from here to the cursor the bytes lie in `block`
    std::unique_ptr<char[]> block; // the block of the cursor, as far as it has come

    bool settled = false;    // the answer told what was asked; no bytes of the file are expected
    bool progressed = false; // a block was kept
    bool pastHalf = false;
    bool draining = false; // comes to its end for the sake of its connection alone
    bool paused = false;
    StreamError fault; // why the file refused the answer

    [[nodiscard]] ByteRange rest() const noexcept { return answered ? ByteRange{cursor, end} : asked; }
};

// A file, as the loop sees it. Thread: the loop's.
class iRangeClient {
public:
    enum class Verdict {
        take, // the body is wanted
        drop, // it is not, but the connection is
        leave // neither is
    };
    enum class Flow { go, pause, leave };
    struct Plan {
        std::vector<std::unique_ptr<RangeJob>> abort; // the loop forgets them
        std::vector<RangeJob*> start;                 // owned by the client until `finished`
        std::vector<RangeJob*> resume;
        bool starved = false; // to be planned again when another request has ended
    };

    virtual ~iRangeClient() = default;
    [[nodiscard]] virtual CurlHTTPServer& server() noexcept = 0;
    // What to do now; `room` more requests may run at once.
    [[nodiscard]] virtual Plan plan(std::size_t room) = 0;
    [[nodiscard]] virtual Verdict answered(RangeJob& job, RangeAnswer const& answer) = 0;
    [[nodiscard]] virtual Flow received(RangeJob& job, std::string_view bytes) = 0;
    // The request has ended; no error means that its answer came whole. The job is the client's again.
    virtual void finished(RangeJob& job, StreamError const& error) = 0;
};

} // namespace engine
