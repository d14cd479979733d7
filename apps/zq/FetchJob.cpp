#include "apps/zq/FetchJob.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>

#include "apps/zq/Text.h"
#include "host/engine/files/LocalPath.h"
#include "host/files/iFileManager.h"
#include "host/modules/ModuleThreads.h"
#include "host/os/OS.h"

namespace zq {

namespace {

constexpr std::size_t mostEvents = 100'000;

bool isCancelled() {
    return BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling;
}

} // namespace

// What the repository writes to while it fetches one clip after the other.
class FetchJob::Log final : public LoggerBase {
public:
    Log(FetchJob& job, engine::iTaskMonitor& monitor) : job_(job), monitor_(monitor) {}

    void write(WideString const& text, eOutputType type) override {
        FetchEvent event;
        event.text = utf8(text);
        event.type = type;
        event.indent = indent_;
        event.clip = clip_;
        lastLine_ = event.text;
        transferFailed_ = transferFailed_ || type == eTransferFailed;
        percent_ = -1;
        job_.add(std::move(event));
    }
    void incIndent() override { ++indent_; }
    void decIndent() override { indent_ = std::max(indent_ - 1, 0); }
    void reportProgress(double fraction, WideString const&) override {
        double const part = std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0.0;
        monitor_.setProgress(part);
        int const percent = static_cast<int>(part * 100);
        if (percent == percent_) {
            return;
        }
        percent_ = percent;
        FetchEvent event;
        event.kind = FetchEvent::Kind::progress;
        event.indent = indent_;
        event.fraction = part;
        event.clip = clip_;
        std::error_code error;
        std::uintmax_t const size = std::filesystem::file_size(file_, error);
        if (!error) {
            event.fileBytes = size;
        }
        job_.add(std::move(event));
    }

    void beginClip(std::size_t index, WideString const& file) {
        clip_ = index;
        file_ = engine::localPath(file);
        lastLine_.clear();
        transferFailed_ = false;
        indent_ = 0;
        percent_ = -1;
    }
    // The last line of this clip; empty where none was written.
    [[nodiscard]] std::string const& lastLine() const noexcept { return lastLine_; }
    [[nodiscard]] bool transferFailed() const noexcept { return transferFailed_; }

private:
    FetchJob& job_;
    engine::iTaskMonitor& monitor_;
    std::size_t clip_ = 0;
    std::filesystem::path file_;
    int indent_ = 0;
    int percent_ = -1; // the last that was told of this transfer
    std::string lastLine_;
    bool transferFailed_ = false;
};

engine::TaskResult FetchJob::run(MediaFileRepositoryBase& repository, engine::Project& project,
                                 engine::iTaskMonitor& monitor) {
    Zq::ThreadAttachment const thread;
    auto const log = Zq::makeShared<Log>(*this, monitor);
    std::size_t begun = 0;
    for (FetchClip const& clip : clips_) {
        if (isCancelled()) {
            break;
        }
        ++begun;
        monitor.setStep(clip.name + " (" + std::to_string(begun) + " of " + std::to_string(clips_.size()) +
                        ")");
        monitor.setProgress(0);
        log->beginClip(begun - 1, clip.localPath);
        fetch(clip, repository, project, log);
    }
    FetchOutcome const all = outcome();
    engine::TaskResult result;
    result.succeeded = all.failed.empty() && all.relinked.size() == clips_.size();
    result.text = std::to_string(all.relinked.size()) + " of " + std::to_string(clips_.size()) +
                  (clips_.size() == 1 ? " clip relinked" : " clips relinked");
    if (!all.failed.empty()) {
        result.text += "; clip " + all.failed.front().id + ": " + all.failed.front().reason;
    }
    return result;
}

void FetchJob::fetch(FetchClip const& clip, MediaFileRepositoryBase& repository, engine::Project& project,
                     Zq::Ptr<Log> const& log) {
    LightweightVector<RemoteAsset> assets;
    assets.push_back(clip.asset);
    bool const result = repository.fetchFullMedia(assets, 0, LoggerHandle(Zq::Ptr<LoggerBase>(log)));

    // The repository's result says only whether the service gave an address: whether the edit plays the file
    // is asked of the project.
    std::optional<engine::EditRecord> const record = project.edit(clip.cookie);
    std::optional<engine::Result<engine::RelinkReport>> const relink = project.lastRelink(clip.cookie);
    bool const playsFile =
        record && record->mediaLocation == clip.localPath && OS().fileManager().fileExists(clip.localPath);
    bool const refused = relink && !*relink;

    std::lock_guard const lock(mutex_);
    outcome_.result = outcome_.result && result;
    if (result && playsFile && !refused && !log->transferFailed()) {
        FetchedClip done;
        done.id = clip.id;
        done.name = clip.name;
        done.cookie = clip.cookie;
        done.file = utf8(clip.localPath);
        done.differences = record->differences;
        done.cutShort = relink ? (**relink).cutShort : std::vector<std::int64_t>();
        outcome_.relinked.push_back(std::move(done));
        return;
    }
    UnfetchedClip failed;
    failed.id = clip.id;
    failed.name = clip.name;
    using Why = UnfetchedClip::Why;
    if (isCancelled()) {
        failed.why = Why::cancelled;
        failed.reason = "cancelled";
    } else if (!result || log->transferFailed()) {
        bool const isTold = !log->lastLine().empty();
        failed.why = isTold ? Why::transfer : Why::refused;
        failed.reason = isTold ? log->lastLine() : "the service refused it";
    } else if (refused) {
        failed.why = Why::media;
        failed.reason = relink->error();
    } else {
        failed.why = Why::preview;
        failed.reason = "the edit still plays its preview";
    }
    outcome_.failed.push_back(std::move(failed));
}

void FetchJob::add(FetchEvent event) {
    if (watcher_) {
        watcher_(event);
    }
    std::lock_guard const lock(mutex_);
    if (events_.size() < mostEvents) {
        events_.push_back(std::move(event));
    }
}

std::vector<FetchEvent> FetchJob::eventsSince(std::size_t known) const {
    std::lock_guard const lock(mutex_);
    if (known >= events_.size()) {
        return {};
    }
    return {events_.begin() + static_cast<std::ptrdiff_t>(known), events_.end()};
}

FetchOutcome FetchJob::outcome() const {
    std::lock_guard const lock(mutex_);
    return outcome_;
}

std::uint64_t FetchList::taskOf(std::string const& id, engine::TaskQueue const& tasks) const {
    for (Entry const& entry : entries_) {
        std::optional<engine::TaskReport> const report = tasks.report(entry.task);
        bool const runs = report && !report->ended;
        if (runs && std::ranges::find(entry.job->clips(), id, &FetchClip::id) != entry.job->clips().end()) {
            return entry.task;
        }
    }
    return 0;
}

void FetchList::add(std::uint64_t task, std::shared_ptr<FetchJob const> job) {
    entries_.push_back({task, std::move(job)});
}

void FetchList::cancelAll(engine::TaskQueue& tasks) {
    for (Entry const& entry : entries_) {
        tasks.cancel(entry.task);
    }
    for (Entry const& entry : entries_) {
        for (;;) {
            std::optional<engine::TaskReport> const report =
                tasks.waitFor(entry.task, std::chrono::seconds(1));
            if (!report || report->ended) {
                break;
            }
        }
    }
    entries_.clear();
}

} // namespace zq
