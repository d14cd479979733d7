// The small files that are served for a clip: its thumbnail and its previews, made when first wanted or
// ahead.
//
// They lie in the data folder under the clip's number and the stamp of its file, so that a changed file gets
// new ones. A rendition appears there whole or not at all.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/Process.h"

namespace tarn7d {

enum class RenditionKind {
    thumbnail,          // NNNNNNNNN_iconm.jpeg
    preview,            // NNNNNNNNN.mov and NNNNNNNNN_prev_264.mov
    highQualityPreview, // NNNNNNNNN.mp4, and NNNNNNNNN_main_xl.mp4 of clips of 1080 lines and more
};

struct RenditionName {
    std::int64_t clipId = 0;
    RenditionKind kind = RenditionKind::thumbnail;
    int leastHeight = 0; // clips of fewer lines have nothing under this name

    friend bool operator==(RenditionName const&, RenditionName const&) = default;
};

// Reads the name of a file as it stands in an address; empty for anything else.
[[nodiscard]] std::optional<RenditionName> parseRenditionName(std::string_view fileName);

// The least height of clips of which the high-quality preview is a version of its own.
inline constexpr int highQualityHeight = 1080;

class Renditions {
public:
    enum class State {
        ready,
        unavailable, // it could not be made from the clip's file
        pending,     // still being made
    };
    struct Answer {
        State state = State::unavailable;
        std::filesystem::path file; // when ready
    };

    // Removes what an interrupted run left behind. Throws std::filesystem::filesystem_error when the folder
    // cannot be made.
    Renditions(std::filesystem::path folder, Catalogue const& catalogue);
    // Kills what is being made.
    ~Renditions();
    Renditions(Renditions const&) = delete;
    Renditions& operator=(Renditions const&) = delete;

    // The rendition of the clip, made now if need be; a second caller for the same one waits for the first.
    // Waits at most so long; the work then goes on. Any thread.
    [[nodiscard]] Answer get(Clip const& clip, RenditionKind kind, std::chrono::milliseconds patience);

    // Kills what is being made and lets every caller that waits go, with State::pending. Nothing is made any
    // more. Any thread.
    void cancel();

    // Makes the rendition in the background, behind what is asked for, if it is not there. Any thread.
    void prepare(Clip const& clip, RenditionKind kind);

private:
    struct Job {
        Clip clip;
        RenditionKind kind = RenditionKind::thumbnail;
        std::filesystem::path target;
        ProcessPriority priority = ProcessPriority::normal;
    };
    enum class JobState { waiting, running, failed };
    // A preview of a long clip takes minutes: thumbnails, and previews that somebody waits for, have workers
    // that take nothing else.
    enum class Role { thumbnails, askedPreviews, previews };

    [[nodiscard]] std::filesystem::path targetOf(Clip const& clip, RenditionKind kind) const;
    void enqueue(Job job);
    void work(Role role, std::stop_token const& stop);
    [[nodiscard]] std::deque<Job>::iterator nextJob(Role role);
    [[nodiscard]] bool make(Job const& job, std::stop_token const& stop) const;
    // Removes the renditions of what the clip's file held before.
    void removeOutdated(Clip const& clip) const;
    [[nodiscard]] bool makeTo(Job const& job, std::filesystem::path const& temporary,
                              std::stop_token const& stop) const;

    std::filesystem::path const folder_;
    Catalogue const& catalogue_;

    std::mutex mutex_; // guards the members below
    std::condition_variable_any changed_;
    std::deque<Job> queue_;
    // By target; an entry goes when the rendition is there, and stays when it failed.
    std::map<std::filesystem::path, JobState> states_;

    bool cancelled_ = false;

    std::vector<std::jthread> workers_;
};

} // namespace tarn7d
