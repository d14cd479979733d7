// The fetches of a run: begun at the desks, watched for the pages, kept so that what failed can be begun
// again.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/RepositoryDesk.h"
#include "host/json/Builder.h"

namespace zq::panel {

// Ends before the desks and before the modules are unloaded. The events "task" and "log" come from here, of
// one task at most five a second. Thread: any, unless said otherwise.
class Fetches {
public:
    static constexpr std::size_t mostEnded = 100; // of those that have ended, the oldest go
    static constexpr std::size_t mostClips = 1'000;

    // Both outlive it.
    Fetches(engine::Engine& engine, EventHub& events);
    // end()
    ~Fetches();
    Fetches(Fetches const&) = delete;
    Fetches& operator=(Fetches const&) = delete;

    // Tells no page any more and lets go of everything; tasks that run go on. Thread: any but a task's.
    void end();

    // Queues the fetch of these clips, which are owned, and gives its task. Throws ApiError(conflict) where
    // one of them is being fetched already or the project belongs to another process, CommandError where a
    // clip has no edit; nothing is queued then. Thread: the desk's.
    std::uint64_t begin(RepositoryDesk const& desk, Session& session,
                        LightweightVector<RemoteAsset> const& assets);

    // The clips that an ended fetch has not fetched.
    struct Remaining {
        std::string repository; // short name
        std::vector<std::string> clips;
    };
    // Throws ApiError: notFound for a task that is no fetch of this run, conflict where it has not ended or
    // has fetched all.
    [[nodiscard]] Remaining remaining(std::uint64_t task) const;

    // Throws ApiError: notFound where there is no such task, conflict where it has ended.
    void cancel(std::uint64_t task);

    // The task that fetches the clip of that repository now; 0 where none does.
    [[nodiscard]] std::uint64_t taskOf(std::string_view repository, std::string_view clip) const;

    // All tasks of the host, in their order, as a list.
    void addTasks(JSON::Builder& json, char const* key) const;
    // The lines of the import log behind that number, as JSON. Throws ApiError(notFound).
    [[nodiscard]] std::string log(std::uint64_t task, std::size_t since) const;

private:
    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace zq::panel
