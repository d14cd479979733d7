// Rendering an exported sequence with melt, the player and renderer of the MLT project.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace zq {

struct Rendering {
    enum class Outcome { done, notInstalled, cancelled, failed };
    Outcome outcome = Outcome::failed;
    std::string reason; // of a failure: what melt said last
};

// Renders the MLT file to `target`, an MP4 file with H.264 and AAC. `onProgress` is told a fraction from 0 to
// 1 now and then, on this thread; when it gives false, melt is ended. What is at the target afterwards is
// whole only when the rendering is done. Thread: any.
[[nodiscard]] Rendering renderWithMelt(std::filesystem::path const& mlt, std::filesystem::path const& target,
                                       std::function<bool(double fraction)> const& onProgress);

} // namespace zq
