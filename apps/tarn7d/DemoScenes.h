// The pictures of the demonstration clips, as filter graphs of the ffmpeg program's generated sources.
#pragma once

#include <string>

namespace tarn7d {

enum class DemoScene {
    sunset,
    hills,
    city,
    aurora,
    sea,
    stars,
    mandelbrot,
    life,
    weave,
    gradient,
    carpet,
    chart
};

struct DemoPicture {
    DemoScene scene = DemoScene::chart;
    int width = 0;
    int height = 0;
    std::string rate; // as FFmpeg reads it: "25" or "24000/1001"
    int frames = 0;
};

// The graph that makes the picture, in the form of ffmpeg's "lavfi" input.
[[nodiscard]] std::string sceneGraph(DemoPicture const& picture);

} // namespace tarn7d
