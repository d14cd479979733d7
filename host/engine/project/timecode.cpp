#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdio>

#include "host/engine/project/Sequence.h"

namespace engine {

namespace {

// Numbers that a drop-frame count leaves out at the start of each minute but every tenth.
std::uint64_t droppedNumbers(Zq::FrameRate rate) noexcept {
    switch (rate) {
    case Zq::FrameRate::f29_97:
        return 2;
    case Zq::FrameRate::f59_94:
        return 4;
    default:
        return 0;
    }
}

// The number that a drop-frame count writes for the frame.
std::uint64_t droppedCount(std::uint64_t frame, std::uint64_t framesPerSecond, std::uint64_t dropped) {
    std::uint64_t const minute = framesPerSecond * 60 - dropped;
    std::uint64_t const tenMinutes = minute * 10 + dropped;
    std::uint64_t const rest = frame % tenMinutes;
    std::uint64_t const minutes = rest < dropped ? 0 : (rest - dropped) / minute;
    return frame + dropped * (frame / tenMinutes * 9 + minutes);
}

} // namespace

std::string timecode(std::int64_t frame, Zq::FrameRate rate) {
    auto const framesPerSecond = static_cast<std::uint64_t>(std::llround(Zq::getFramesPerSecond(rate)));
    if (framesPerSecond == 0) {
        return std::to_string(frame);
    }
    std::uint64_t const dropped = droppedNumbers(rate);
    auto count = static_cast<std::uint64_t>(frame);
    if (frame < 0) {
        count = 0 - count;
    }
    if (dropped != 0) {
        count = droppedCount(count, framesPerSecond, dropped);
    }
    std::uint64_t const seconds = count / framesPerSecond;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s%02" PRIu64 ":%02" PRIu64 ":%02" PRIu64 "%c%0*" PRIu64,
                  frame < 0 ? "-" : "", seconds / 3600, seconds / 60 % 60, seconds % 60,
                  dropped != 0 ? ';' : ':', framesPerSecond > 100 ? 3 : 2, count % framesPerSecond);
    return text.data();
}

} // namespace engine
