// Keeps the catalogue in step with the footage folder while the service runs, in a thread of its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>

#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/Renditions.h"

namespace tarn7d {

class CatalogueWatch {
public:
    enum class Prepare { ahead, asked };

    // Catalogue and renditions outlive the watch.
    CatalogueWatch(Catalogue& catalogue, Renditions& renditions, std::chrono::milliseconds interval,
                   Prepare prepare);

    // Begins to look the folder through, and returns when that is done once, or after so long. Call once.
    void start(std::chrono::milliseconds patience);
    // Returns when the thread has ended. Also done by the destructor.
    void stop();

    // Looks the folder through on this thread, files that still grow included. Any thread.
    void rescan() { scan(Catalogue::Settling::none, {}); }

private:
    void watch(std::stop_token const& stop);
    void scan(Catalogue::Settling settling, std::stop_token const& stop);
    void prepareAll();

    Catalogue& catalogue_;
    Renditions& renditions_;
    std::chrono::milliseconds const interval_;
    bool const prepareAhead_;

    std::mutex firstScanMutex_; // guards the flag
    std::condition_variable_any firstScanEnded_;
    bool firstScanDone_ = false;

    std::jthread watcher_;
};

} // namespace tarn7d
