#include "host/engine/streaming/StreamSession.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "host/engine/crypto/Digest.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/engine/streaming/DiskBlockStore.h"
#include "host/engine/streaming/MemoryBlockStore.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

// Between two looks at the reading task's state.
constexpr std::chrono::milliseconds longestWait{4};
constexpr int mostVainReads = 3;
constexpr int mostProbes = 3; // of a file that changes while it is opened

StreamError changedError() {
    return {StreamError::Kind::changed, "the file has changed on the server"};
}

} // namespace

std::optional<StreamSource> StreamSource::of(Zq::Ptr<iHTTPServer> const& server, WideString const& remoteName,
                                             std::filesystem::path cachePath) {
    Zq::Ptr<CurlHTTPServer> curl = Zq::dynamicCast<CurlHTTPServer>(server);
    if (!curl || remoteName.isEmpty()) {
        return std::nullopt;
    }
    StreamSource source;
    source.url = curl->address().url(remoteName);
    std::string_view const plain = std::string_view(source.url).substr(0, source.url.find_first_of("?#"));
    source.identity = sha256Hex(plain);
    source.remoteName = plain.substr(curl->address().origin().size());
    source.cachePath = std::move(cachePath);
    source.server = std::move(curl);
    return source;
}

StreamSession::StreamSession(StreamSource source, std::shared_ptr<StreamingCore> core)
    : source_(std::move(source)), core_(std::move(core)) {
    head_.remoteName = source_.remoteName;
    head_.identity = source_.identity;
}

void StreamSession::attach(StreamReader& reader) {
    Lock const lock(mutex_);
    readers_.push_back(&reader);
    if (phase_ == Phase::idle || phase_ == Phase::missing) {
        ++generation_; // whoever saw that it was missing is not to read what comes now
        try {
            beginAsking();
            wakeLoop();
        } catch (...) {
            readers_.pop_back();
            phase_ = Phase::idle;
            throw;
        }
    }
}

bool StreamSession::detach(StreamReader& reader) {
    Lock const lock(mutex_);
    std::erase(readers_, &reader);
    if (!readers_.empty()) {
        wakeLoop();
        return false;
    }
    retired_ = true;
    if (phase_ == Phase::open) {
        noteValidation();
    }
    closeStore();
    ++generation_;
    for (std::unique_ptr<RangeJob> const& job : jobs_) {
        job->draining = job->answered && job->kind != RangeJob::Kind::stream &&
                        job->rest().size() <= PlanLimits::finish_bytes;
    }
    wakeLoop();
    return true;
}

void StreamSession::wakeLoop() {
    core_->loop.wake(shared_from_this());
}

void StreamSession::beginAsking() {
    error_ = {};
    attempts_ = 0;
    withoutRange_ = false;
    checkPending_ = false;
    if (!takeKept()) {
        beginProbing();
    }
}

void StreamSession::beginProbing() noexcept {
    phase_ = Phase::probing;
    probeError_ = {};
}

// A store of this very file that may still hold is kept open; any other is left alone until the server has
// told what there is instead.
bool StreamSession::takeKept() {
    if (source_.cachePath.empty()) {
        return false;
    }
    std::unique_ptr<DiskBlockStore> store = DiskBlockStore::open(source_.cachePath);
    std::optional<StoreHeader> const kept = store ? store->header() : std::nullopt;
    if (!kept || kept->identity != source_.identity) {
        return false;
    }
    head_.indexInFront = kept->indexInFront;
    Validator const& validator = kept->content.validator;
    std::int64_t const age_s = core_->options.now_s() - kept->validatedAt_s;
    bool const isFresh = age_s >= 0 && age_s < core_->options.trustTime.count();
    bool const canBeChecked = validator.isStrong() || validator.kind == Validator::Kind::lastModified;
    if (kept->content.total_bytes == 0 || (!isFresh && !canBeChecked)) {
        return false;
    }
    head_ = *kept;
    store->keep(*kept);
    checkPending_ = !isFresh && validator.isStrong() && store->isComplete();
    phase_ = isFresh || checkPending_ ? Phase::open : Phase::checking;
    store_ = std::move(store);
    core_->stores.used(source_.cachePath);
    return true;
}

void StreamSession::adopt(ContentState const& content) {
    head_.content = content;
    head_.validatedAt_s = core_->options.now_s();
    phase_ = Phase::open;
    error_ = {};
    if (content.total_bytes != 0) {
        openStore();
    }
    changed_.notify_all();
}

void StreamSession::openStore() {
    std::unique_ptr<DiskBlockStore> store;
    if (!source_.cachePath.empty()) {
        store = DiskBlockStore::open(source_.cachePath);
    }
    if (!store) {
        useMemory();
        return;
    }
    std::optional<StoreHeader> const kept = store->header();
    head_.generation = kept ? kept->generation : 0;
    bool const isSame =
        kept && kept->identity == head_.identity && kept->content.isSameFile(head_.content) &&
        (kept->content.validator.isStrong() || kept->content.validator.kind == Validator::Kind::lastModified);
    if (isSame) {
        head_.indexInFront = kept->indexInFront;
        store->keep(head_);
        store->note(head_);
    } else {
        ++head_.generation;
        if (!store->reset(head_)) {
            useMemory();
            return;
        }
    }
    store_ = std::move(store);
    core_->stores.used(source_.cachePath);
}

void StreamSession::useMemory() {
    store_ = std::make_shared<MemoryBlockStore>(core_->options.memoryStore_bytes);
    (void)store_->reset(head_);
}

void StreamSession::noteValidation() {
    if (store_) {
        store_->note(head_);
    }
}

void StreamSession::closeStore() {
    bool const onDisk = store_ && store_->keepsAll();
    store_.reset();
    edge_.clear();
    if (onDisk) {
        core_->stores.used(source_.cachePath);
    }
}

void StreamSession::change(char const* reason) {
    ++generation_;
    if (store_) {
        StoreHeader blank = head_;
        blank.content = {};
        ++blank.generation;
        (void)store_->reset(blank);
    }
    closeStore();
    head_.content = {};
    head_.indexInFront = false;
    error_ = {StreamError::Kind::changed, reason};
    ++attempts_;
    checkPending_ = false;
    // Whoever has not seen the old file yet gets the new one.
    auto const isNew = [](StreamReader const* reader) { return reader->generation == 0; };
    if (std::ranges::any_of(readers_, isNew) && attempts_ < mostProbes) {
        beginProbing();
    } else {
        phase_ = Phase::idle;
    }
    changed_.notify_all();
    wakeLoop();
}

void StreamSession::goMissing() {
    closeStore();
    head_.content = {};
    phase_ = Phase::missing;
    changed_.notify_all();
}

void StreamSession::fail(StreamError error) {
    closeStore();
    phase_ = Phase::idle;
    error_ = std::move(error);
    changed_.notify_all();
}

StreamError StreamSession::waitABit(Lock& lock) {
    if (isTaskCancelled()) {
        return {StreamError::Kind::cancelled, "the reading task was cancelled"};
    }
    if (core_->ended) {
        return {StreamError::Kind::ended, "streaming has ended"};
    }
    changed_.wait_for(lock, longestWait);
    return {};
}

StreamSession::Opened StreamSession::open(StreamReader& reader, Retry retry) {
    Lock lock(mutex_);
    StreamError error;
    while (!error && reader.generation == 0) {
        switch (phase_) {
        case Phase::open:
        case Phase::missing:
            reader.generation = generation_;
            break;
        case Phase::idle:
            if (retry == Retry::never) {
                error = error_ ? error_ : changedError();
                break;
            }
            retry = Retry::never;
            beginAsking();
            wakeLoop();
            break;
        case Phase::probing:
        case Phase::checking:
            error = waitABit(lock);
            break;
        }
    }
    return {error ? 0 : head_.content.total_bytes, phase_ == Phase::missing, std::move(error)};
}

bool StreamSession::isThere(std::uint64_t position) {
    return store_ && store_->presence(blockOf(position), 1)[0];
}

// The first answers are under way before anything is read: to wait for them tells nothing of how the reader
// goes on.
bool StreamSession::comesWithTheProbe(std::uint64_t position) const {
    return std::ranges::any_of(jobs_, [&](std::unique_ptr<RangeJob> const& job) {
        bool const isProbe = job->kind == RangeJob::Kind::head || job->kind == RangeJob::Kind::tail;
        ByteRange const rest = job->rest();
        return isProbe && job->generation == generation_ && rest.contains(position) &&
               position - rest.begin <= PlanLimits::join_bytes;
    });
}

std::size_t StreamSession::takeArriving(std::uint64_t position, std::span<char> out) const {
    for (std::unique_ptr<RangeJob> const& job : jobs_) {
        if (job->generation == generation_ && job->answered &&
            ByteRange{job->heldFrom, job->cursor}.contains(position)) {
            std::size_t const count =
                static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), job->cursor - position));
            std::memcpy(out.data(), job->block.get() + position % block_bytes, count);
            return count;
        }
    }
    if (ByteRange{edgeBegin_, edgeBegin_ + edge_.size()}.contains(position)) {
        std::size_t const offset = static_cast<std::size_t>(position - edgeBegin_);
        std::size_t const count = std::min(out.size(), edge_.size() - offset);
        std::memcpy(out.data(), edge_.data() + offset, count);
        return count;
    }
    return 0;
}

StreamSession::ReadResult StreamSession::read(StreamReader& reader, std::uint64_t position,
                                              std::span<char> out) {
    ReadResult result;
    std::uint64_t fromStore = 0;
    Lock lock(mutex_);
    reader.position = position;
    reader.error = {};
    reader.failures = 0;
    reader.ahead.begin({position, position + out.size()}, std::chrono::steady_clock::now());
    bool missed = false;
    int vainReads = 0;
    while (result.count < out.size()) {
        if (reader.generation != generation_) {
            result.error = changedError();
            break;
        }
        std::uint64_t const next = position + result.count;
        std::span<char> const rest = out.subspan(result.count);
        if (std::shared_ptr<iBlockStore> const store = store_) {
            lock.unlock();
            std::size_t const count = store->read(next, rest);
            lock.lock();
            if (count > 0) {
                vainReads = 0;
                reader.failures = 0;
                result.count += count;
                fromStore += missed ? 0 : count;
                continue; // the generation is looked at before anything is handed out
            }
        }
        if (std::size_t const count = takeArriving(next, rest); count > 0) {
            result.count += count;
            reader.failures = 0;
            continue;
        }
        if (reader.generation == generation_ && isThere(next)) {
            // It came in between; a store that never gives back what it took is of no use.
            if (++vainReads >= mostVainReads) {
                useMemory();
            }
            continue;
        }
        if (!missed && !comesWithTheProbe(next)) {
            reader.ahead.miss();
        }
        missed = true;
        reader.want = {next, position + out.size()};
        wakeLoop();
        while (reader.generation == generation_ && !reader.error && !result.error && !isThere(next) &&
               takeArriving(next, rest.first(1)) == 0) {
            result.error = waitABit(lock);
        }
        if (!result.error && reader.error && !isThere(next)) {
            result.error = reader.error;
        }
        reader.error = {};
        if (result.error) {
            break;
        }
    }
    if (!result.error && reader.generation != generation_) {
        result.error = changedError();
    }
    reader.want = {};
    reader.position = position + result.count;
    if (missed || reader.ahead.piece_bytes() != 0) {
        wakeLoop();
    }
    core_->counters.bytesRead += result.error ? 0 : result.count;
    core_->counters.bytesFromStore += result.error ? 0 : fromStore;
    return result;
}

} // namespace engine
