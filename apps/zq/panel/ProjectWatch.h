// Tells the pages of every change of the project, whichever process makes it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "apps/zq/panel/EventHub.h"
#include "host/engine/project/Project.h"

namespace zq::panel {

// The event "project" comes from here: of this process's changes at once, of another's and of the end of the
// one that held the project within half a second, which is looked for only while a page listens. Takes the
// place of the project's listener. Thread: any.
class ProjectWatch {
public:
    // Both outlive it.
    ProjectWatch(engine::Project& project, EventHub& events);
    ~ProjectWatch();
    ProjectWatch(ProjectWatch const&) = delete;
    ProjectWatch& operator=(ProjectWatch const&) = delete;

private:
    // What the pages know of it.
    struct Known {
        std::int64_t revision = 0;
        bool canWrite = false;
        bool operator==(Known const&) const = default;
    };
    [[nodiscard]] Known look() const { return {project_.revision(), project_.canWrite()}; }
    void tellIfChanged();

    engine::Project& project_;
    EventHub& events_;
    std::mutex mutex_; // guards what is told
    Known told_;
    std::mutex waiting_;
    std::condition_variable_any wake_;
    std::jthread thread_;
};

} // namespace zq::panel
