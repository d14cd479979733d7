#include "apps/zq/panel/Fetches.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stop_token>
#include <thread>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/fetchClips.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/TaskJson.h"
#include "host/engine/files/LocalPath.h"
#include "host/log/Log.h"
#include "host/modules/ModuleThreads.h"

namespace zq::panel {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds betweenEvents{200};

// The bytes of a transfer, of which only a fraction is told: what the file has by now, divided by it.
class TransferWatch {
public:
    void see(FetchEvent const& event) {
        if (event.kind == FetchEvent::Kind::line || event.clip != clip_) {
            *this = TransferWatch(event.clip);
            return;
        }
        fraction_ = event.fraction;
        bytes_ = event.fileBytes;
        if (!bytes_ || fraction_ <= 0) {
            return;
        }
        // A repository may count otherwise than by the bytes of this file: only what two moments agree on is
        // told.
        double const total = std::round(static_cast<double>(*bytes_) / fraction_);
        isSure_ = total > 0 && std::abs(total - total_) * 1000 <= total;
        total_ = total;
    }

    [[nodiscard]] std::size_t clip() const noexcept { return clip_; }
    [[nodiscard]] double fraction() const noexcept { return fraction_; }
    [[nodiscard]] std::optional<std::uint64_t> bytes() const noexcept { return bytes_; }
    [[nodiscard]] std::optional<std::uint64_t> total() const noexcept {
        return isSure_ ? std::optional(static_cast<std::uint64_t>(total_)) : std::nullopt;
    }

    explicit TransferWatch(std::size_t clip = 0) : clip_(clip) {}

private:
    std::size_t clip_; // index in its job
    double fraction_ = 0;
    std::optional<std::uint64_t> bytes_;
    double total_ = 0;
    bool isSure_ = false;
};

std::optional<std::uint64_t> sizeOf(std::string const& file) {
    std::error_code error;
    std::uintmax_t const size = std::filesystem::file_size(engine::localPath(wide(file)), error);
    return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

// One fetch of this run.
struct Fetch {
    std::uint64_t task = 0;
    std::string repository;
    std::shared_ptr<FetchJob const> job;
    std::size_t knownEvents = 0;
    std::vector<LogLine> lines;
    TransferWatch transfer;
    std::optional<Clock::time_point> began; // the first moment with progress
    double progressAtBegin = 0;
    std::optional<TransferState> ended; // known once the task has ended
    TaskFacts facts;                    // as of the last look
    std::size_t toldLines = 0;
    std::string told;      // the last "task" event
    bool isClosed = false; // its end was told

    [[nodiscard]] std::vector<std::string> missing() const {
        FetchOutcome const outcome = job->outcome();
        std::vector<std::string> ids;
        for (FetchClip const& clip : job->clips()) {
            if (std::ranges::find(outcome.relinked, clip.id, &FetchedClip::id) == outcome.relinked.end()) {
                ids.push_back(clip.id);
            }
        }
        return ids;
    }

    void look(engine::TaskReport const& report) {
        for (FetchEvent& event : job->eventsSince(knownEvents)) {
            ++knownEvents;
            transfer.see(event);
            if (event.kind == FetchEvent::Kind::line) {
                lines.push_back({lines.size() + 1, std::move(event.text), event.type, event.indent});
            }
        }
        facts.report = report;
        facts.repository = repository;
        FetchOutcome const outcome = job->outcome();
        facts.failed = outcome.failed;
        facts.fetched = outcome.relinked.size();
        facts.clip = report.ended || knownEvents == 0 ? 0 : transfer.clip() + 1;
        if (!report.ended) {
            facts.transfer = present(outcome);
        } else {
            if (!ended) {
                ended = endOf(outcome);
            }
            facts.transfer = *ended;
            addUnbegun(outcome);
            facts.canRetry = !missing().empty();
        }
    }

private:
    [[nodiscard]] TransferState present(FetchOutcome const& outcome) {
        double const all = static_cast<double>(job->clips().size());
        double const done = static_cast<double>(outcome.relinked.size() + outcome.failed.size());
        double const running = static_cast<double>(transfer.clip()) + transfer.fraction();
        TransferState state;
        state.progress = std::clamp(std::max(done, running) / all, 0.0, 1.0);
        state.bytes = transfer.bytes();
        state.totalBytes = transfer.total();
        Clock::time_point const now = Clock::now();
        if (!began && state.progress > 0) {
            began = now;
            progressAtBegin = state.progress;
        }
        constexpr double least = 0.01; // of the way: before that a guess is worth nothing
        if (began && state.progress >= progressAtBegin + least) {
            double const passed = std::chrono::duration<double>(now - *began).count();
            double const left = passed * (1 - state.progress) / (state.progress - progressAtBegin);
            constexpr double longest = 60.0 * 60 * 24 * 30;
            if (left <= longest) {
                state.secondsLeft = static_cast<std::uint64_t>(std::ceil(left));
            }
        }
        return state;
    }

    [[nodiscard]] TransferState endOf(FetchOutcome const& outcome) const {
        TransferState state;
        state.progress = static_cast<double>(outcome.relinked.size()) /
                         static_cast<double>(std::max<std::size_t>(job->clips().size(), 1));
        std::uint64_t sum = 0;
        for (FetchedClip const& clip : outcome.relinked) {
            std::optional<std::uint64_t> const size = sizeOf(clip.file);
            if (!size) {
                return state;
            }
            sum += *size;
        }
        state.bytes = sum;
        return state;
    }

    // The clips whose turn did not come: their task was cancelled.
    void addUnbegun(FetchOutcome const& outcome) {
        for (FetchClip const& clip : job->clips()) {
            bool const isDone =
                std::ranges::find(outcome.relinked, clip.id, &FetchedClip::id) != outcome.relinked.end() ||
                std::ranges::find(outcome.failed, clip.id, &UnfetchedClip::id) != outcome.failed.end();
            if (!isDone) {
                facts.failed.push_back({clip.id, clip.name, "cancelled", UnfetchedClip::Why::cancelled});
            }
        }
    }
};

} // namespace

class Fetches::Implementation {
public:
    Implementation(engine::Engine& engine, EventHub& events)
        : tasks_(engine.tasks()), events_(events),
          thread_([this](std::stop_token const& stop) { run(stop); }) {}

    void end() {
        thread_.request_stop();
        std::lock_guard const joining(joining_);
        if (thread_.joinable()) {
            thread_.join();
        }
        std::deque<Fetch> gone;
        std::lock_guard const lock(mutex_);
        gone.swap(fetches_);
    }

    std::uint64_t begin(RepositoryDesk const& desk, Session& session,
                        LightweightVector<RemoteAsset> const& assets) {
        if (!session.engine().project().canWrite()) {
            throw ApiError(ErrorCode::conflict,
                           "another program works on this project: until that ends it can only be looked at",
                           Reason::readOnly);
        }
        for (RemoteAsset const& asset : assets) {
            std::string const id = utf8(asset.id);
            if (std::uint64_t const task = session.fetches().taskOf(id, tasks_); task != 0) {
                throw ApiError(ErrorCode::conflict,
                               "clip " + id + " is being fetched by task " + std::to_string(task),
                               Reason::beingFetched);
            }
        }
        QueuedFetch const queued = queueFetch(session, assets);
        Fetch fetch;
        fetch.task = queued.task;
        fetch.repository = desk.shortName();
        fetch.job = queued.job;
        for (FetchClip const& clip : fetch.job->clips()) {
            fetch.facts.clips.push_back(clip.name);
        }
        {
            std::lock_guard const lock(mutex_);
            fetches_.push_back(std::move(fetch));
            poked_ = true;
        }
        wake_.notify_all();
        return queued.task;
    }

    [[nodiscard]] Remaining remaining(std::uint64_t task) {
        std::lock_guard const lock(mutex_);
        Fetch const& fetch = find(task);
        std::optional<engine::TaskReport> const report = tasks_.report(task);
        if (report && !report->ended) {
            throw ApiError(ErrorCode::conflict, "task " + std::to_string(task) + " has not ended yet",
                           Reason::taskRuns);
        }
        Remaining remaining{fetch.repository, fetch.missing()};
        if (remaining.clips.empty()) {
            throw ApiError(ErrorCode::conflict, "task " + std::to_string(task) + " has fetched all its clips",
                           Reason::allFetched);
        }
        return remaining;
    }

    void cancel(std::uint64_t task) {
        if (!tasks_.cancel(task)) {
            bool const hasEnded = tasks_.report(task).has_value();
            throw ApiError(hasEnded ? ErrorCode::conflict : ErrorCode::notFound,
                           hasEnded ? "task " + std::to_string(task) + " has ended already"
                                    : "there is no task " + std::to_string(task),
                           hasEnded ? Reason::taskEnded : Reason::unknownTask);
        }
        {
            std::lock_guard const lock(mutex_);
            poked_ = true;
        }
        wake_.notify_all();
    }

    [[nodiscard]] std::uint64_t taskOf(std::string_view repository, std::string_view clip) const {
        std::lock_guard const lock(mutex_);
        for (Fetch const& fetch : fetches_) {
            auto const& clips = fetch.job->clips();
            if (fetch.isClosed || fetch.repository != repository ||
                std::ranges::find(clips, clip, &FetchClip::id) == clips.end()) {
                continue;
            }
            std::optional<engine::TaskReport> const report = tasks_.report(fetch.task);
            if (report && !report->ended) {
                return fetch.task;
            }
        }
        return 0;
    }

    void addTasks(JSON::Builder& json, char const* key) {
        json.startArray(key);
        std::lock_guard const lock(mutex_);
        for (engine::TaskReport const& report : tasks_.reports()) {
            auto const found = std::ranges::find(fetches_, report.number, &Fetch::task);
            if (found != fetches_.end()) {
                found->look(report);
                addTask(json, nullptr, found->facts);
            } else {
                addTask(json, nullptr, plainFacts(report));
            }
        }
        json.endArray();
    }

    [[nodiscard]] std::string log(std::uint64_t task, std::size_t since) {
        JSON::Builder json;
        json.startChild(nullptr);
        std::lock_guard const lock(mutex_);
        Fetch& fetch = find(task);
        if (std::optional<engine::TaskReport> const report = tasks_.report(task)) {
            fetch.look(*report);
        }
        addLines(json, "lines", std::span(fetch.lines).subspan(std::min(since, fetch.lines.size())));
        json.endChild();
        return utf8(json.getOutput());
    }

private:
    // Needs the lock.
    [[nodiscard]] Fetch& find(std::uint64_t task) {
        auto const found = std::ranges::find(fetches_, task, &Fetch::task);
        if (found == fetches_.end()) {
            throw ApiError(ErrorCode::notFound, "no fetch of this run has the number " + std::to_string(task),
                           Reason::unknownTask);
        }
        return *found;
    }

    static TaskFacts plainFacts(engine::TaskReport const& report) {
        TaskFacts facts;
        facts.report = report;
        facts.transfer.progress = report.ended && report.result.succeeded ? 1 : report.progress;
        return facts;
    }

    void run(std::stop_token const& stop) {
        // What is let go of here may be a module's.
        Zq::ThreadAttachment const attachment;
        std::unique_lock lock(mutex_);
        while (!stop.stop_requested()) {
            wake_.wait(lock, stop, [this] { return poked_ || isAnyOpen(); });
            poked_ = false;
            std::deque<Fetch> gone;
            try {
                tellAll();
                gone = takeOldest();
            } catch (std::exception const& failure) {
                Log("The pages were not told of a fetch: %s", failure.what());
            }
            lock.unlock();
            gone.clear();
            lock.lock();
            wake_.wait_for(lock, stop, betweenEvents, [] { return false; });
        }
    }

    [[nodiscard]] bool isAnyOpen() const {
        return std::ranges::any_of(fetches_, [](Fetch const& fetch) { return !fetch.isClosed; });
    }

    void tellAll() {
        for (Fetch& fetch : fetches_) {
            if (!fetch.isClosed) {
                tell(fetch);
            }
        }
    }

    void tell(Fetch& fetch) {
        std::optional<engine::TaskReport> const report = tasks_.report(fetch.task);
        if (!report) { // a hundred others have ended since the last look
            fetch.isClosed = true;
            return;
        }
        fetch.look(*report);
        if (fetch.lines.size() > fetch.toldLines) {
            JSON::Builder json;
            json.startChild(nullptr);
            addNumber(json, "task", fetch.task);
            addLines(json, "lines", std::span(fetch.lines).subspan(fetch.toldLines));
            json.endChild();
            fetch.toldLines = fetch.lines.size();
            events_.send("log", utf8(json.getOutput()));
        }
        JSON::Builder json;
        addTask(json, nullptr, fetch.facts);
        if (std::string now = utf8(json.getOutput()); now != fetch.told) {
            fetch.told = now;
            events_.send("task", std::move(now));
        }
        fetch.isClosed = report->ended;
    }

    std::deque<Fetch> takeOldest() {
        std::deque<Fetch> gone;
        while (fetches_.size() > mostEnded && fetches_.front().isClosed) {
            gone.push_back(std::move(fetches_.front()));
            fetches_.pop_front();
        }
        return gone;
    }

    engine::TaskQueue& tasks_;
    EventHub& events_;
    mutable std::mutex mutex_;
    std::condition_variable_any wake_;
    std::deque<Fetch> fetches_;
    bool poked_ = false;
    std::mutex joining_;
    std::jthread thread_;
};

Fetches::Fetches(engine::Engine& engine, EventHub& events)
    : implementation_(std::make_unique<Implementation>(engine, events)) {}

Fetches::~Fetches() {
    end();
}

void Fetches::end() {
    implementation_->end();
}

std::uint64_t Fetches::begin(RepositoryDesk const& desk, Session& session,
                             LightweightVector<RemoteAsset> const& assets) {
    return implementation_->begin(desk, session, assets);
}

Fetches::Remaining Fetches::remaining(std::uint64_t task) const {
    return implementation_->remaining(task);
}

void Fetches::cancel(std::uint64_t task) {
    implementation_->cancel(task);
}

std::uint64_t Fetches::taskOf(std::string_view repository, std::string_view clip) const {
    return implementation_->taskOf(repository, clip);
}

void Fetches::addTasks(JSON::Builder& json, char const* key) const {
    implementation_->addTasks(json, key);
}

std::string Fetches::log(std::uint64_t task, std::size_t since) const {
    return implementation_->log(task, since);
}

} // namespace zq::panel
