// The demonstration footage: a small stock library of generated clips, for trying the service without
// footage.
#pragma once

#include <filesystem>
#include <span>
#include <stop_token>
#include <string_view>

#include "apps/tarn7d/DemoScenes.h"

namespace tarn7d {

enum class DemoScan { progressive, lowerFieldFirst, upperFieldFirst };

struct DemoClip {
    std::string_view file;
    std::string_view title;
    std::string_view keywords; // separated by blanks
    int price_cents;
    DemoScene scene;
    std::string_view colour; // a filter that tints the scene, or empty
    int width;
    int height;
    std::string_view rate;
    int frames;
    DemoScan scan;
    std::string_view encoding; // arguments of ffmpeg, separated by blanks
    std::string_view sound;    // a source of ffmpeg, or empty for none
};

// The whole library, in the order in which it is made.
[[nodiscard]] std::span<DemoClip const> demoClips();

enum class DemoResult { complete, stopped, failed };

// Makes those of the clips that are missing in the folder, each with its side file, two at a time, and tells
// of it in the log. A clip appears whole or not at all, so an interrupted call is resumed by the next; what
// is there stays untouched. Needs the ffmpeg program. Any thread; ends early when asked to stop.
[[nodiscard]] DemoResult makeDemoFootage(std::filesystem::path const& folder, std::stop_token const& stop,
                                         std::span<DemoClip const> clips = demoClips());

} // namespace tarn7d
