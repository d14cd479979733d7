// Fetching the full media of owned clips, as a task of the host: one clip after the other, with what the
// repository tells on the way and what came of each.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/engine/project/Project.h"
#include "host/engine/tasks/TaskQueue.h"
#include "repository/MediaFileRepositoryBase.h"

namespace zq {

// One clip to fetch: its edit was opened on the repository's thread.
struct FetchClip {
    RemoteAsset asset;
    EditModifier edit; // keeps a temporary edit from ending
    Cookie cookie;
    std::string id;
    std::string name;
    WideString localPath;
};

// A line of the repository's log, or how far the running transfer has come.
struct FetchEvent {
    enum class Kind { line, progress };
    Kind kind = Kind::line;
    std::string text; // of a line; from the service, not made plain
    LoggerBase::eOutputType type = LoggerBase::ePlain;
    int indent = 0;
    double fraction = 0;  // of progress
    std::size_t clip = 0; // index of the clip that it belongs to
    // Of progress: the size of the clip's file at that moment; nothing where the repository writes elsewhere.
    std::optional<std::uint64_t> fileBytes;
};

struct FetchedClip {
    std::string id;
    std::string name;
    Cookie cookie;
    std::string file;
    std::vector<engine::MediaDifference> differences;
    std::vector<std::int64_t> cutShort; // placements that show frames which the file does not have
};

struct UnfetchedClip {
    // What stopped it, for a program that has words of its own.
    enum class Why {
        cancelled,
        transfer, // the reason is a line of the import log
        refused,  // the service gave nothing, and said nothing
        media,    // the file came and cannot be used: the reason says why
        preview,  // the edit still plays its preview
    };
    std::string id;
    std::string name;
    std::string reason; // in words
    Why why = Why::transfer;
};

struct FetchOutcome {
    bool result = true; // what fetchFullMedia says of all clips together
    std::vector<FetchedClip> relinked;
    std::vector<UnfetchedClip> failed;
};

// Thread: made and read by the main thread, run by the task's own.
class FetchJob {
public:
    // Is told each event as it comes, on the task's thread.
    using Watcher = std::function<void(FetchEvent const&)>;

    explicit FetchJob(std::vector<FetchClip> clips, Watcher watcher = {})
        : clips_(std::move(clips)), watcher_(std::move(watcher)) {}

    // The work of the task. The repository and the project outlive it.
    [[nodiscard]] engine::TaskResult run(MediaFileRepositoryBase& repository, engine::Project& project,
                                         engine::iTaskMonitor& monitor);

    [[nodiscard]] std::vector<FetchClip> const& clips() const noexcept { return clips_; }
    // The events behind the first `known`. Progress comes once for each whole percent. A job of very many
    // clips keeps the first hundred thousand events.
    [[nodiscard]] std::vector<FetchEvent> eventsSince(std::size_t known) const;
    // Of the clips that are done so far. One whose task ended before its turn is not in it.
    [[nodiscard]] FetchOutcome outcome() const;

private:
    class Log;
    void add(FetchEvent event);
    void fetch(FetchClip const& clip, MediaFileRepositoryBase& repository, engine::Project& project,
               Zq::Ptr<Log> const& log);

    std::vector<FetchClip> const clips_;
    Watcher const watcher_;
    mutable std::mutex mutex_;
    std::vector<FetchEvent> events_;
    FetchOutcome outcome_;
};

// The fetches of this process: no clip is fetched twice at a time, as both would write the same file.
// Thread: the main thread.
class FetchList {
public:
    // The task that fetches the clip now; 0 where none does.
    [[nodiscard]] std::uint64_t taskOf(std::string const& id, engine::TaskQueue const& tasks) const;
    void add(std::uint64_t task, std::shared_ptr<FetchJob const> job);
    // Cancels all that run and waits for their end.
    void cancelAll(engine::TaskQueue& tasks);

private:
    struct Entry {
        std::uint64_t task = 0;
        std::shared_ptr<FetchJob const> job; // the task holds it too, and may outlive the command
    };
    std::vector<Entry> entries_;
};

} // namespace zq
