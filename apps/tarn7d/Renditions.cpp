#include "apps/tarn7d/Renditions.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/PrivateFile.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

struct NameRow {
    std::string_view ending;
    RenditionKind kind;
    int leastHeight = 0;
};

constexpr NameRow nameRows[] = {
    {"_iconm.jpeg", RenditionKind::thumbnail},
    {".mov", RenditionKind::preview},
    {"_prev_264.mov", RenditionKind::preview},
    {".mp4", RenditionKind::highQualityPreview},
    {"_main_xl.mp4", RenditionKind::highQualityPreview, highQualityHeight},
};

constexpr std::string_view temporaryEnding = ".new";
constexpr int thumbnailWidth = 320;

char const* fileNameOf(RenditionKind kind) {
    switch (kind) {
    case RenditionKind::thumbnail:
        return "iconm.jpeg";
    case RenditionKind::preview:
        return "prev_264.mov";
    case RenditionKind::highQualityPreview:
        return "main_xl.mp4";
    }
    return "";
}

// The picture keeps its shape, the rate and the length those of the clip, so that a cut made on the preview
// lies on the same picture of the full file. The index stands in front, for players that read over the
// network.
std::vector<std::string> previewArguments(fs::path const& source, fs::path const& target, RenditionKind kind,
                                          Clip const& clip) {
    bool const large = kind == RenditionKind::highQualityPreview;
    std::string const width = large ? "1280" : "640";
    bool const interlaced = clip.media.standard <= 3 || clip.media.standard == 8;
    std::string const filter = std::string(interlaced ? "yadif=0," : "") + "scale=w='trunc(min(" + width +
                               ",iw*sar)/2)*2':h='max(2,trunc(ow/dar/2)*2)',setsar=1,format=yuv420p";
    std::vector<std::string> arguments{
        "ffmpeg", "-nostdin", "-v", "error", "-y",
        // A playlist must not lead to other files.
        "-protocol_whitelist", "file,pipe", "-format_whitelist", allowedFormats, "-i",
        "file:" + source.string(), "-map", "0:v:0", "-map", "0:a:0?", "-map_metadata", "-1", "-dn", "-sn",
        "-vf", filter, "-c:v", "libx264", "-preset", "veryfast", "-crf", large ? "21" : "26", "-g", "12",
        "-bf", "0", "-threads", "2", "-c:a", "aac", "-ac", "2", "-b:a", large ? "128k" : "96k", "-movflags",
        "+faststart", "-f", large ? "mp4" : "mov", "file:" + target.string()};
    return arguments;
}

std::string folderNameOf(Clip const& clip) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%09lld-%llx-%llx", static_cast<long long>(clip.id),
                  static_cast<unsigned long long>(clip.stamp.size_bytes),
                  static_cast<unsigned long long>(clip.stamp.modified_ns));
    return name.data();
}

} // namespace

std::optional<RenditionName> parseRenditionName(std::string_view fileName) {
    constexpr std::size_t leastDigits = 9;
    constexpr std::size_t mostDigits = 10;
    std::size_t const digits = std::min(fileName.find_first_not_of("0123456789"), fileName.size());
    RenditionName name;
    if (digits < leastDigits || digits > mostDigits ||
        !parseInteger(fileName.substr(0, digits), name.clipId)) {
        return std::nullopt;
    }
    for (NameRow const& row : nameRows) {
        if (fileName.substr(digits) == row.ending) {
            name.kind = row.kind;
            name.leastHeight = row.leastHeight;
            return name;
        }
    }
    return std::nullopt;
}

Renditions::Renditions(fs::path folder, Catalogue const& catalogue)
    : folder_(std::move(folder)), catalogue_(catalogue) {
    fs::create_directories(folder_);
    for (fs::directory_entry const& clip : fs::directory_iterator(folder_)) {
        std::error_code error;
        for (fs::directory_entry const& file : fs::directory_iterator(clip.path(), error)) {
            if (file.path().native().ends_with(temporaryEnding)) {
                fs::remove(file.path(), error);
            }
        }
    }
    for (Role const role : {Role::thumbnails, Role::askedPreviews, Role::previews}) {
        workers_.emplace_back([this, role](std::stop_token const& stop) { work(role, stop); });
    }
}

Renditions::~Renditions() {
    cancel();
}

void Renditions::cancel() {
    {
        std::lock_guard const lock(mutex_);
        cancelled_ = true;
    }
    for (std::jthread& worker : workers_) {
        worker.request_stop();
    }
    changed_.notify_all();
}

fs::path Renditions::targetOf(Clip const& clip, RenditionKind kind) const {
    return folder_ / folderNameOf(clip) / fileNameOf(kind);
}

void Renditions::enqueue(Job job) {
    states_[job.target] = JobState::waiting;
    if (job.priority == ProcessPriority::normal) {
        queue_.push_front(std::move(job));
    } else {
        queue_.push_back(std::move(job));
    }
    changed_.notify_all();
}

Renditions::Answer Renditions::get(Clip const& clip, RenditionKind kind, std::chrono::milliseconds patience) {
    fs::path const target = targetOf(clip, kind);
    std::error_code error;
    if (fs::exists(target, error)) {
        return {State::ready, target};
    }
    std::unique_lock lock(mutex_);
    auto const known = states_.find(target);
    if (known == states_.end()) {
        if (fs::exists(target, error)) {
            return {State::ready, target};
        }
        enqueue({clip, kind, target, ProcessPriority::normal});
    } else if (known->second == JobState::waiting) {
        auto const job = std::find_if(queue_.begin(), queue_.end(),
                                      [&target](Job const& waiting) { return waiting.target == target; });
        if (job != queue_.end() && job->priority == ProcessPriority::background) {
            queue_.erase(job);
            enqueue({clip, kind, target, ProcessPriority::normal});
        }
    }
    auto const settled = [this, &target] {
        auto const state = states_.find(target);
        return state == states_.end() || state->second == JobState::failed;
    };
    (void)changed_.wait_for(lock, patience, [&] { return cancelled_ || settled(); });
    if (cancelled_ || !settled()) {
        return {State::pending, {}};
    }
    return states_.contains(target) ? Answer{State::unavailable, {}} : Answer{State::ready, target};
}

void Renditions::prepare(Clip const& clip, RenditionKind kind) {
    fs::path const target = targetOf(clip, kind);
    std::error_code error;
    std::lock_guard const lock(mutex_);
    if (!fs::exists(target, error) && !states_.contains(target)) {
        enqueue({clip, kind, target, ProcessPriority::background});
    }
}

std::deque<Renditions::Job>::iterator Renditions::nextJob(Role role) {
    return std::find_if(queue_.begin(), queue_.end(), [role](Job const& job) {
        bool const isThumbnail = job.kind == RenditionKind::thumbnail;
        switch (role) {
        case Role::thumbnails:
            return isThumbnail;
        case Role::askedPreviews:
            return !isThumbnail && job.priority == ProcessPriority::normal;
        case Role::previews:
            return !isThumbnail;
        }
        return false;
    });
}

void Renditions::work(Role role, std::stop_token const& stop) {
    std::unique_lock lock(mutex_);
    while (changed_.wait(lock, stop, [this, role] { return nextJob(role) != queue_.end(); })) {
        if (stop.stop_requested()) {
            return;
        }
        auto const next = nextJob(role);
        Job const job = std::move(*next);
        queue_.erase(next);
        states_[job.target] = JobState::running;
        lock.unlock();
        bool const made = make(job, stop);
        lock.lock();
        if (made) {
            states_.erase(job.target);
        } else {
            states_[job.target] = JobState::failed;
        }
        changed_.notify_all();
    }
}

void Renditions::removeOutdated(Clip const& clip) const {
    std::string const current = folderNameOf(clip);
    std::string const number = current.substr(0, current.find('-') + 1);
    std::vector<fs::path> outdated;
    for (fs::directory_entry const& entry : fs::directory_iterator(folder_)) {
        std::string const name = entry.path().filename().string();
        if (name.starts_with(number) && name != current) {
            outdated.push_back(entry.path());
        }
    }
    for (fs::path const& path : outdated) {
        std::error_code error;
        fs::remove_all(path, error);
    }
}

bool Renditions::make(Job const& job, std::stop_token const& stop) const {
    fs::path temporary = job.target;
    temporary += temporaryEnding;
    std::error_code error;
    try {
        if (fs::create_directories(job.target.parent_path())) {
            removeOutdated(job.clip);
        }
        if (makeTo(job, temporary, stop)) {
            fs::rename(temporary, job.target);
            return true;
        }
    } catch (std::exception const& failure) {
        logLine(std::string("cannot store a rendition: ") + failure.what());
    }
    fs::remove(temporary, error);
    return false;
}

bool Renditions::makeTo(Job const& job, fs::path const& temporary, std::stop_token const& stop) const {
    fs::path const source = catalogue_.fileOf(job.clip);
    if (job.kind == RenditionKind::thumbnail) {
        std::vector<unsigned char> const picture = makeThumbnail(source, thumbnailWidth);
        if (picture.empty()) {
            logLine("no thumbnail could be made of " + job.clip.path.string());
            return false;
        }
        writeFileAtomically(temporary, {reinterpret_cast<char const*>(picture.data()), picture.size()}, 0600);
        return true;
    }
    ProcessResult const result =
        runProcess(previewArguments(source, temporary, job.kind, job.clip), stop, job.priority);
    if (result.exitStatus != 0 && !result.stopped) {
        logLine("no preview could be made of " + job.clip.path.string() + ": " + result.errors);
    }
    return result.exitStatus == 0;
}

} // namespace tarn7d
