#include "apps/zq/panel/ProjectWatch.h"

#include <chrono>
#include <stop_token>

#include "apps/zq/panel/ProjectJson.h"
#include "host/log/Log.h"

namespace zq::panel {

ProjectWatch::ProjectWatch(engine::Project& project, EventHub& events)
    : project_(project), events_(events), told_(look()) {
    thread_ = std::jthread([this](std::stop_token const& stop) {
        constexpr std::chrono::milliseconds step{500};
        std::unique_lock lock(waiting_);
        while (!wake_.wait_for(lock, stop, step, [&] { return stop.stop_requested(); })) {
            if (events_.isHeard()) {
                tellIfChanged();
            }
        }
    });
    project_.onChange([this] { tellIfChanged(); });
}

ProjectWatch::~ProjectWatch() {
    project_.onChange({});
}

void ProjectWatch::tellIfChanged() {
    try {
        std::lock_guard const lock(mutex_);
        Known const now = look();
        if (now != told_) {
            told_ = now;
            events_.send("project", projectJson(project_));
        }
    } catch (std::exception const& failure) {
        Log("The pages were not told of a change of the project: %s", failure.what());
    }
}

} // namespace zq::panel
