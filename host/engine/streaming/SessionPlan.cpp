// What a session asks of the network, and what it leaves.
#include <algorithm>
#include <utility>

#include "host/engine/streaming/StreamSession.h"

namespace engine {

namespace {

constexpr std::uint64_t head_bytes = std::uint64_t{512} << 10;
constexpr std::uint64_t tail_bytes = std::uint64_t{64} << 10;
constexpr std::uint64_t streamLead_bytes = std::uint64_t{4} << 20;

std::string rangeLine(ByteRange range) {
    return "Range: bytes=" + std::to_string(range.begin) + '-' + std::to_string(range.end - 1);
}

} // namespace

bool StreamSession::isRunning(RangeJob::Kind kind) const {
    return std::ranges::any_of(jobs_, [&](std::unique_ptr<RangeJob> const& job) {
        return job->kind == kind && job->generation == generation_;
    });
}

RangeJob& StreamSession::add(Plan& plan, RangeJob::Kind kind, ByteRange asked) {
    auto job = std::make_unique<RangeJob>();
    job->kind = kind;
    job->asked = asked;
    job->generation = generation_;
    job->url = source_.url;
    plan.start.push_back(job.get());
    jobs_.push_back(std::move(job));
    return *jobs_.back();
}

void StreamSession::leave(Plan& plan, RangeJob const& job) {
    auto const found =
        std::ranges::find_if(jobs_, [&job](auto const& candidate) { return candidate.get() == &job; });
    plan.abort.push_back(std::move(*found));
    jobs_.erase(found);
}

void StreamSession::leaveUseless(Plan& plan) {
    for (std::size_t i = jobs_.size(); i-- > 0;) {
        if (jobs_[i]->generation != generation_ && !jobs_[i]->draining) {
            leave(plan, *jobs_[i]);
        }
    }
}

iRangeClient::Plan StreamSession::plan(std::size_t room) {
    Plan plan;
    std::lock_guard const lock(mutex_);
    leaveUseless(plan);
    room += plan.abort.size();
    if (retired_) {
        return plan;
    }
    switch (phase_) {
    case Phase::idle:
    case Phase::missing:
        break;
    case Phase::probing:
        planProbe(plan, room);
        break;
    case Phase::checking:
        planCheck(plan, room);
        break;
    case Phase::open:
        if (checkPending_) {
            planCheck(plan, room);
        }
        if (head_.content.ranges) {
            planParts(plan, room);
        } else {
            planStream(plan, room);
        }
        break;
    }
    return plan;
}

void StreamSession::planProbe(Plan& plan, std::size_t room) {
    if (isRunning(RangeJob::Kind::head) || isRunning(RangeJob::Kind::tail) ||
        isRunning(RangeJob::Kind::stream)) {
        return;
    }
    if (room == 0) {
        plan.starved = true;
        return;
    }
    ++attempts_;
    probeError_ = {};
    RangeJob& head = add(plan, RangeJob::Kind::head, {0, head_bytes});
    if (withoutRange_) {
        return;
    }
    head.headers.push_back(rangeLine(head.asked));
    if (room > 1 && !head_.indexInFront && !core_->isIndexInFront(source_.identity)) {
        RangeJob& tail = add(plan, RangeJob::Kind::tail, {});
        tail.headers.push_back("Range: bytes=-" + std::to_string(tail_bytes));
    }
}

void StreamSession::planCheck(Plan& plan, std::size_t room) {
    if (isRunning(RangeJob::Kind::check)) {
        return;
    }
    if (room == 0) {
        plan.starved = true;
        return;
    }
    checkPending_ = false;
    ++attempts_;
    RangeJob& check = add(plan, RangeJob::Kind::check, {});
    Validator const& validator = head_.content.validator;
    check.headers.emplace_back("Range: bytes=0-0");
    check.headers.push_back((validator.isStrong() ? "If-None-Match: " : "If-Modified-Since: ") +
                            validator.text);
}

void StreamSession::planParts(Plan& plan, std::size_t room) {
    std::vector<RangeJob*> jobs;
    std::vector<RunningRange> running;
    std::uint64_t const total = head_.content.total_bytes;
    for (std::unique_ptr<RangeJob> const& job : jobs_) {
        if (job->generation != generation_ || job->kind == RangeJob::Kind::check) {
            continue;
        }
        bool const isTail = job->kind == RangeJob::Kind::tail && !job->answered;
        jobs.push_back(job.get());
        running.push_back({isTail ? ByteRange{total - std::min(total, tail_bytes), total} : job->rest(),
                           job->kind != RangeJob::Kind::range});
    }
    std::vector<ReadNeed> needs;
    for (StreamReader const* const reader : readers_) {
        needs.push_back(reader->generation == generation_ && !reader->error ? reader->need() : ReadNeed{});
    }
    Presence const presence = [this](std::uint64_t first, std::size_t count) {
        return store_ ? store_->presence(first, count) : std::vector<bool>(count);
    };
    RangePlan const ranges = planRanges(total, running, needs, presence, room);
    for (std::size_t const place : ranges.abort) {
        leave(plan, *jobs[place]);
    }
    for (PlannedRange const& planned : ranges.start) {
        RangeJob& job = add(plan, RangeJob::Kind::range, planned.range);
        job.headers.push_back(rangeLine(planned.range));
        if (head_.content.validator.isStrong()) {
            job.headers.push_back("If-Range: " + head_.content.validator.text);
        }
        if (planned.ahead) {
            readers_[planned.reader]->ahead.issued(planned.range.end);
        }
    }
    plan.starved = ranges.starved;
}

// One request from the beginning on; it is made anew for a reader that wants what has gone by.
void StreamSession::planStream(Plan& plan, std::size_t room) {
    RangeJob* stream = nullptr;
    for (std::unique_ptr<RangeJob> const& job : jobs_) {
        if (job->generation == generation_ && job->kind == RangeJob::Kind::stream) {
            stream = job.get();
        }
    }
    auto const waits = [this](StreamReader const* reader) {
        return reader->generation == generation_ && !reader->want.isEmpty() && !reader->error &&
               !isThere(reader->want.begin);
    };
    if (stream != nullptr && stream->answered && hasPassedAReader(*stream)) {
        leave(plan, *stream);
        stream = nullptr;
        ++room;
    }
    if (stream != nullptr) {
        if (stream->paused) {
            plan.resume.push_back(stream);
        }
        return;
    }
    if (std::ranges::any_of(readers_, waits)) {
        if (room == 0) {
            plan.starved = true;
            return;
        }
        (void)add(plan, RangeJob::Kind::stream, {0, head_.content.total_bytes});
    }
}

// True where the store would lose what its reader has not seen yet.
bool StreamSession::runsTooFarAhead(RangeJob const& job) const {
    if (job.kind != RangeJob::Kind::stream || store_->keepsAll()) {
        return false;
    }
    std::uint64_t furthest = 0;
    for (StreamReader const* const reader : readers_) {
        furthest = std::max({furthest, reader->position, reader->want.end});
    }
    std::uint64_t const lead_bytes =
        std::min<std::uint64_t>(streamLead_bytes, core_->options.memoryStore_bytes / 2);
    return job.cursor > furthest + lead_bytes;
}

bool StreamSession::hasPassedAReader(RangeJob const& job) {
    return std::ranges::any_of(readers_, [&](StreamReader const* reader) {
        return reader->generation == generation_ && !reader->want.isEmpty() &&
               reader->want.begin < job.heldFrom && !isThere(reader->want.begin);
    });
}

} // namespace engine
