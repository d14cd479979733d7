// What the answers tell a session, and where their bytes go.
#include <algorithm>
#include <cstring>
#include <utility>

#include "host/engine/streaming/StreamSession.h"
#include "host/engine/streaming/indexInFront.h"

namespace engine {

namespace {

constexpr int mostAttempts = 2;
constexpr std::int64_t noteEvery_s = 10;

StreamError protocolError(char const* text) {
    return {StreamError::Kind::protocol, text};
}

// Whether asking once more may help. A deadline is not waited for twice.
bool isWorthRepeating(StreamError const& error) {
    switch (error.kind) {
    case StreamError::Kind::unreachable:
    case StreamError::Kind::cut:
    case StreamError::Kind::server:
    case StreamError::Kind::refused:
        return true;
    default:
        return false;
    }
}

// Statuses with which a server may refuse to be asked for a part.
bool mayRefuseRange(int status) {
    return status == 400 || status == 405 || status == 406 || status == 416 || status == 501;
}

// The content that an answer of status 200 or 206 is of; nothing where it does not tell the length.
std::optional<ContentState> contentOf(RangeAnswer const& answer) {
    std::optional<std::uint64_t> total = answer.length;
    if (answer.status == 206) {
        total = answer.contentRange ? answer.contentRange->total : std::nullopt;
    }
    if (!total || *total > largestFile_bytes) {
        return std::nullopt;
    }
    return ContentState{*total, validatorOf(answer.etag, answer.lastModified), answer.status == 206};
}

} // namespace

iRangeClient::Verdict StreamSession::refuse(RangeJob& job, StreamError fault, Verdict verdict) const {
    job.fault = std::move(fault);
    return verdict;
}

iRangeClient::Verdict StreamSession::take(RangeJob& job, ByteRange range) {
    job.answered = true;
    job.cursor = job.heldFrom = range.begin;
    job.end = range.end;
    job.block = std::make_unique<char[]>(block_bytes);
    return Verdict::take;
}

iRangeClient::Verdict StreamSession::answered(RangeJob& job, RangeAnswer const& answer) {
    std::lock_guard const lock(mutex_);
    if (job.generation != generation_) {
        return Verdict::leave;
    }
    if (answer.isPage && (answer.status == 200 || answer.status == 206)) {
        job.settled = job.settled || job.kind == RangeJob::Kind::tail; // the head decides
        return refuse(job, protocolError("a page came in the place of the file"), Verdict::leave);
    }
    switch (job.kind) {
    case RangeJob::Kind::head:
        return answeredHead(job, answer);
    case RangeJob::Kind::tail:
        return answeredTail(job, answer);
    case RangeJob::Kind::range:
        return answeredPart(job, answer);
    case RangeJob::Kind::check:
        return answeredCheck(job, answer);
    case RangeJob::Kind::stream:
        return answeredStream(job, answer);
    }
    return Verdict::leave;
}

// Takes the first answer as what the file is, and holds a later one against it.
iRangeClient::Verdict StreamSession::learn(RangeJob& job, RangeAnswer const& answer,
                                           ContentState const& content, ByteRange range) {
    if (phase_ == Phase::probing) {
        adopt(content);
    } else if (phase_ != Phase::open) {
        job.settled = true; // the other answer has told that there is no such file
        return Verdict::leave;
    } else if (!isOfSameFile(answer, head_.content)) {
        change("the file changed while it was opened");
        return Verdict::leave;
    } else if (!content.ranges) {
        head_.content.ranges = false;
    }
    return range.isEmpty() ? Verdict::drop : take(job, range);
}

iRangeClient::Verdict StreamSession::answeredHead(RangeJob& job, RangeAnswer const& answer) {
    std::optional<ContentState> const content = contentOf(answer);
    if (answer.status == 206) {
        if (StreamError fault = faultOfPart(answer, job.asked, nullptr)) {
            return refuse(job, std::move(fault), Verdict::leave);
        }
        return content ? learn(job, answer, *content, *answer.contentRange->range)
                       : refuse(job, protocolError("the file is too long"), Verdict::leave);
    }
    if (answer.status == 200) {
        if (answer.encoded || !content) {
            return refuse(job,
                          protocolError(answer.encoded ? "the file came with a content encoding"
                                                       : "the server does not tell the length of the file"),
                          Verdict::leave);
        }
        // The server gives no parts: this answer is the stream.
        job.kind = RangeJob::Kind::stream;
        job.settled = content->total_bytes == 0;
        return learn(job, answer, *content, {0, content->total_bytes});
    }
    bool const saysEmpty =
        answer.status == 416 && answer.contentRange && answer.contentRange->total == std::uint64_t{0};
    if (saysEmpty && phase_ == Phase::probing) {
        adopt({});
        job.settled = true;
        return Verdict::drop;
    }
    if (mayRefuseRange(answer.status) && !withoutRange_) {
        withoutRange_ = true;
        return refuse(job, {StreamError::Kind::refused, "the server refuses to give a part"}, Verdict::drop);
    }
    StreamError error = errorOfStatus(answer.status);
    if (error.kind == StreamError::Kind::missing && phase_ == Phase::probing) {
        goMissing();
        job.settled = true;
        return Verdict::drop;
    }
    return refuse(job, std::move(error), Verdict::drop);
}

iRangeClient::Verdict StreamSession::answeredTail(RangeJob& job, RangeAnswer const& answer) {
    job.settled = true; // the head decides where this answer is of no use
    if (answer.status != 206 || answer.encoded || !answer.contentRange || !answer.contentRange->range ||
        !answer.contentRange->total || *answer.contentRange->total > largestFile_bytes) {
        return refuse(job, errorOfStatus(answer.status),
                      answer.status == 200 ? Verdict::leave : Verdict::drop);
    }
    ByteRange const range = *answer.contentRange->range;
    bool const isTail = range.end == *answer.contentRange->total && range.size() <= std::uint64_t{64} << 10;
    if (!isTail || (answer.length && *answer.length != range.size())) {
        return refuse(job, protocolError("another part of the file came than its end"), Verdict::leave);
    }
    job.settled = false;
    return learn(job, answer, *contentOf(answer), range);
}

iRangeClient::Verdict StreamSession::answeredPart(RangeJob& job, RangeAnswer const& answer) {
    if (answer.status == 206) {
        if (!isOfSameFile(answer, head_.content)) {
            change("the file changed on the server");
            return Verdict::leave;
        }
        if (StreamError fault = faultOfPart(answer, job.asked, &head_.content)) {
            return refuse(job, std::move(fault), Verdict::leave);
        }
        if (std::int64_t const now_s = core_->options.now_s();
            head_.content.validator.kind != Validator::Kind::none &&
            now_s >= head_.validatedAt_s + noteEvery_s) {
            head_.validatedAt_s = now_s;
            noteValidation();
        }
        return take(job, *answer.contentRange->range);
    }
    if (answer.status == 200) {
        // A server that gave parts before gives the whole of another file.
        change("the file changed on the server");
        return Verdict::leave;
    }
    bool const hasOtherLength = answer.status == 416 && answer.contentRange && answer.contentRange->total &&
                                *answer.contentRange->total != head_.content.total_bytes;
    if (hasOtherLength) {
        change("the file changed on the server");
        return Verdict::drop;
    }
    return refuse(job, errorOfStatus(answer.status), Verdict::drop);
}

iRangeClient::Verdict StreamSession::answeredStream(RangeJob& job, RangeAnswer const& answer) {
    if (answer.status != 200) {
        return refuse(job, errorOfStatus(answer.status), Verdict::drop);
    }
    if (answer.encoded) {
        return refuse(job, protocolError("the file came with a content encoding"), Verdict::leave);
    }
    if (!answer.length || !isOfSameFile(answer, head_.content)) {
        change("the file changed on the server");
        return Verdict::leave;
    }
    return take(job, {0, head_.content.total_bytes});
}

iRangeClient::Verdict StreamSession::answeredCheck(RangeJob& job, RangeAnswer const& answer) {
    job.settled = true;
    std::optional<ContentState> const content = contentOf(answer);
    bool const carriesFile = answer.status == 200 || answer.status == 206;
    if (answer.status == 304 || (carriesFile && content && content->isSameFile(head_.content))) {
        head_.validatedAt_s = core_->options.now_s();
        noteValidation();
        phase_ = Phase::open;
        changed_.notify_all();
        return answer.status == 200 ? Verdict::leave : Verdict::drop;
    }
    StreamError error = errorOfStatus(answer.status);
    if (error.kind == StreamError::Kind::missing) {
        ++generation_;
        goMissing();
        return Verdict::drop;
    }
    if (carriesFile || answer.status == 416) {
        change("the file changed on the server since it was kept");
        return Verdict::leave;
    }
    return refuse(job, std::move(error), Verdict::drop);
}

iRangeClient::Flow StreamSession::received(RangeJob& job, std::string_view bytes) {
    std::lock_guard const lock(mutex_);
    core_->counters.bytesReceived += bytes.size();
    if (job.draining) {
        job.cursor += bytes.size();
        return job.cursor <= job.end ? Flow::go : Flow::leave;
    }
    if (job.generation != generation_ || !job.answered) {
        return Flow::leave;
    }
    if (runsTooFarAhead(job)) {
        core_->counters.bytesReceived -= bytes.size(); // they come again
        job.paused = true;
        if (hasPassedAReader(job)) {
            wakeLoop(); // it begins anew
        }
        return Flow::pause;
    }
    job.paused = false;
    while (!bytes.empty()) {
        if (job.cursor >= job.end) {
            job.fault = protocolError("more bytes came than were announced");
            return Flow::leave;
        }
        std::uint64_t const block = blockOf(job.cursor);
        ByteRange const place = bytesOfBlock(block, head_.content.total_bytes);
        std::uint64_t const room = std::min(place.end, job.end) - job.cursor;
        std::size_t const count = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), room));
        std::memcpy(job.block.get() + (job.cursor - place.begin), bytes.data(), count);
        job.cursor += count;
        bytes.remove_prefix(count);
        takeEdge(job, place);
        if (job.cursor == place.end) {
            keepBlock(job, block);
        }
    }
    if (!job.pastHalf && job.cursor - job.asked.begin >= job.asked.size() / 2) {
        job.pastHalf = true;
        wakeLoop(); // what comes next may be asked for
    }
    changed_.notify_all();
    return Flow::go;
}

// The bytes that came with the tail complete the block that they lie in.
void StreamSession::takeEdge(RangeJob const& job, ByteRange place) {
    if (edge_.empty() || !place.contains(edgeBegin_) || job.cursor < edgeBegin_ ||
        job.heldFrom != place.begin) {
        return;
    }
    std::memcpy(job.block.get() + (edgeBegin_ - place.begin), edge_.data(), edge_.size());
    storeBlock(blockOf(place.begin), {job.block.get(), static_cast<std::size_t>(place.size())});
}

void StreamSession::storeBlock(std::uint64_t block, std::string_view bytes) {
    if (!store_->presence(block, 1)[0] && !store_->put(block, bytes)) {
        useMemory();
        (void)store_->put(block, bytes);
    }
}

void StreamSession::keepBlock(RangeJob& job, std::uint64_t block) {
    ByteRange const place = bytesOfBlock(block, head_.content.total_bytes);
    if (job.heldFrom > place.begin) {
        // The tail of a file seldom begins where a block does.
        edgeBegin_ = job.heldFrom;
        edge_.assign(job.block.get() + (job.heldFrom - place.begin), place.end - job.heldFrom);
    } else {
        std::string_view const bytes(job.block.get(), static_cast<std::size_t>(place.size()));
        storeBlock(block, bytes);
        job.progressed = true;
        if (block == 0 && indexStandsInFront(bytes)) {
            head_.indexInFront = true;
            core_->rememberIndexInFront(source_.identity);
        }
    }
    job.heldFrom = job.cursor;
}

void StreamSession::finished(RangeJob& finishedJob, StreamError const& ending) {
    std::lock_guard const lock(mutex_);
    auto const place = std::ranges::find_if(
        jobs_, [&](std::unique_ptr<RangeJob> const& candidate) { return candidate.get() == &finishedJob; });
    if (place == jobs_.end()) {
        return;
    }
    std::unique_ptr<RangeJob> const job = std::move(*place);
    jobs_.erase(place);
    if (job->generation != generation_) {
        wakeLoop();
        return;
    }
    StreamError error = job->fault;
    if (!error && !job->settled) {
        bool const endedEarly = job->answered && job->cursor < job->end;
        bool const gaveNothing = job->kind == RangeJob::Kind::range && !job->progressed;
        if (ending) {
            error = ending;
        } else if (!job->answered || endedEarly || gaveNothing) {
            error = {StreamError::Kind::cut, "the answer ended before the part that was asked for"};
        }
    }
    if (error.kind == StreamError::Kind::unreachable && core_->ended) {
        error.kind = StreamError::Kind::ended;
    }
    bool const wasProbe = job->kind == RangeJob::Kind::head || job->kind == RangeJob::Kind::tail;
    if (job->kind == RangeJob::Kind::check) {
        finishCheck(error);
    } else if (phase_ == Phase::probing && wasProbe) {
        if (job->kind == RangeJob::Kind::head || !probeError_) {
            probeError_ = error;
        }
        finishProbe();
    } else if (error) {
        failReaders(*job, error);
    }
    changed_.notify_all();
    wakeLoop();
}

void StreamSession::finishProbe() {
    if (isRunning(RangeJob::Kind::head) || isRunning(RangeJob::Kind::tail)) {
        return;
    }
    if (!isWorthRepeating(probeError_) || attempts_ >= mostAttempts) {
        fail(probeError_ ? probeError_ : protocolError("the server does not tell what the file is"));
    }
}

void StreamSession::finishCheck(StreamError const& error) {
    // What was complete goes on being read when the server cannot be asked.
    if (error && phase_ == Phase::checking && (!isWorthRepeating(error) || attempts_ >= mostAttempts)) {
        fail(error);
    }
}

void StreamSession::failReaders(RangeJob const& job, StreamError const& error) {
    // What came of an unfinished block goes with the request: whoever waits for it has got nothing.
    std::uint64_t const lost = job.answered ? job.heldFrom : job.asked.begin;
    ByteRange const lacking{lost, std::max(job.rest().end, job.asked.end)};
    for (StreamReader* const reader : readers_) {
        bool const waits = !reader->want.isEmpty();
        if (!waits) {
            reader->ahead.stop();
        } else if (lacking.contains(reader->want.begin)) {
            // A stream begins anew at the beginning: that it brought blocks does not bring it further.
            bool const comesFurther = job.progressed && job.kind != RangeJob::Kind::stream;
            bool const again = isWorthRepeating(error) && (comesFurther || reader->failures == 0);
            reader->failures += again ? 1 : 0;
            if (!again) {
                reader->error = error;
            }
        }
    }
}

} // namespace engine
