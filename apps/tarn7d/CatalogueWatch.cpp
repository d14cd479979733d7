#include "apps/tarn7d/CatalogueWatch.h"

#include <algorithm>
#include <limits>

#include "apps/tarn7d/Log.h"

namespace tarn7d {

CatalogueWatch::CatalogueWatch(Catalogue& catalogue, Renditions& renditions,
                               std::chrono::milliseconds interval, Prepare prepare)
    : catalogue_(catalogue), renditions_(renditions), interval_(interval),
      prepareAhead_(prepare == Prepare::ahead) {}

void CatalogueWatch::start(std::chrono::milliseconds patience) {
    watcher_ = std::jthread([this](std::stop_token const& stop) { watch(stop); });
    std::unique_lock lock(firstScanMutex_);
    (void)firstScanEnded_.wait_for(lock, patience, [this] { return firstScanDone_; });
}

void CatalogueWatch::stop() {
    if (watcher_.joinable()) {
        watcher_.request_stop();
        watcher_.join();
    }
}

void CatalogueWatch::watch(std::stop_token const& stop) {
    scan(Catalogue::Settling::none, stop);
    {
        std::lock_guard const lock(firstScanMutex_);
        firstScanDone_ = true;
    }
    firstScanEnded_.notify_all();
    if (prepareAhead_) {
        prepareAll();
    }
    std::mutex pauseMutex;
    std::condition_variable_any pause;
    std::unique_lock lock(pauseMutex);
    auto interval = interval_;
    while (!pause.wait_for(lock, stop, interval, [&stop] { return stop.stop_requested(); })) {
        auto const begin = std::chrono::steady_clock::now();
        scan(Catalogue::Settling::wait, stop);
        // Looking through a very large folder must not keep a processor busy.
        constexpr int restFactor = 20;
        auto const taken =
            std::chrono::ceil<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
        interval = std::max(interval_, taken * restFactor);
    }
}

void CatalogueWatch::scan(Catalogue::Settling settling, std::stop_token const& stop) {
    try {
        Catalogue::ScanReport const report = catalogue_.scan(settling, stop);
        if (report.changedClips()) {
            logLine("catalogue: " + std::to_string(report.added) + " clips new or changed, " +
                    std::to_string(report.removed) + " gone");
            if (prepareAhead_ && settling == Catalogue::Settling::wait) {
                prepareAll();
            }
        }
    } catch (std::exception const& error) {
        logLine(std::string("the footage folder could not be looked through: ") + error.what());
    }
}

void CatalogueWatch::prepareAll() {
    try {
        ClipPage const all = catalogue_.search({}, 0, std::numeric_limits<std::int64_t>::max());
        // Everybody sees the thumbnails, few the previews, and hardly anybody two previews of a small clip.
        for (RenditionKind const kind :
             {RenditionKind::thumbnail, RenditionKind::preview, RenditionKind::highQualityPreview}) {
            for (Clip const& clip : all.clips) {
                if (kind != RenditionKind::highQualityPreview || clip.media.height >= highQualityHeight) {
                    renditions_.prepare(clip, kind);
                }
            }
        }
    } catch (std::exception const& error) {
        logLine(std::string("previews could not be prepared: ") + error.what());
    }
}

} // namespace tarn7d
