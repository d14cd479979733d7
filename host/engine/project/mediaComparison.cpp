#include "host/engine/project/mediaComparison.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include "host/engine/project/frameCounts.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

std::string inSeconds(double time_s) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.2f s", std::min(time_s, 1e12));
    return text.data();
}

std::string inWords(Zq::FrameRate rate) {
    return std::string(toUTF8(Zq::getDisplayString(rate)).view());
}

std::string rateInWords(MediaFacts const& found) {
    if (found.rate != Zq::FrameRate::unknown) {
        return inWords(found.rate);
    }
    if (found.rateNumerator <= 0 || found.rateDenominator <= 0) {
        return "unknown";
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.5g",
                  static_cast<double>(found.rateNumerator) / found.rateDenominator);
    return text.data();
}

std::string sizeInWords(std::int32_t width, std::int32_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

std::string soundInWords(std::int32_t channels) {
    return channels <= 0 ? "no sound" : std::to_string(channels) + (channels == 1 ? " channel" : " channels");
}

// The length of a frame of the edit, or of the file where the edit has no rate.
double frameOf(EditRecord const& promised, MediaFacts const& found) noexcept {
    if (double const rate = Zq::getFramesPerSecond(promised.rate); rate > 0) {
        return 1 / rate;
    }
    bool const tells = found.rateNumerator > 0 && found.rateDenominator > 0;
    return tells ? static_cast<double>(found.rateDenominator) / found.rateNumerator : 0;
}

// A picture's size that was read off the preview says nothing of the full media.
bool promisesSize(EditRecord const& promised) noexcept {
    return promised.video.hasSize && !(promised.videoMeasured && promised.mediaLocation.isEmpty());
}

} // namespace

bool hasPicture(MediaFacts const& found) noexcept {
    return !found.videoCodec.empty() || found.width > 0;
}

double lengthOf(MediaFacts const& found) noexcept {
    if (found.frames > 0 && found.rateNumerator > 0 && found.rateDenominator > 0) {
        return static_cast<double>(found.frames) * found.rateDenominator / found.rateNumerator;
    }
    return std::isfinite(found.duration_s) ? found.duration_s : 0;
}

std::int64_t framesOf(EditRecord const& edit, MediaFacts const& found) {
    return found.frames > 0 && found.rate == edit.rate
               ? found.frames
               : framesBefore(lengthOf(found), edit.rate, std::numeric_limits<std::int64_t>::max());
}

std::vector<MediaDifference> differencesBetween(EditRecord const& promised, MediaFacts const& found) {
    std::vector<MediaDifference> differences;
    bool const comparesPicture = hasPicture(found);
    if (comparesPicture && promised.rate != Zq::FrameRate::unknown && promised.rate != found.rate) {
        differences.push_back({MediaDifference::What::rate, inWords(promised.rate), rateInWords(found)});
    }
    // A hair more than a frame is what rounding makes of one.
    double const tolerance = frameOf(promised, found) * 1.000001;
    double const length = lengthOf(found);
    if (promised.duration_s > 0 && std::abs(length - promised.duration_s) > tolerance) {
        differences.push_back(
            {MediaDifference::What::length, inSeconds(promised.duration_s), inSeconds(length)});
    }
    ShotVideoMetadata const& video = promised.video;
    if (!comparesPicture && promised.videoChannels > 0) {
        differences.push_back({MediaDifference::What::size,
                               promisesSize(promised) ? sizeInWords(video.width, video.height) : "a picture",
                               "no picture"});
    } else if (comparesPicture && promisesSize(promised) &&
               (video.width != found.width || video.height != found.height)) {
        differences.push_back({MediaDifference::What::size, sizeInWords(video.width, video.height),
                               sizeInWords(found.width, found.height)});
    }
    if (promised.audioChannels != found.audioChannels) {
        differences.push_back({MediaDifference::What::sound, soundInWords(promised.audioChannels),
                               soundInWords(found.audioChannels)});
    }
    return differences;
}

char const* wordFor(MediaDifference::What what) noexcept {
    switch (what) {
    case MediaDifference::What::rate:
        return "rate";
    case MediaDifference::What::length:
        return "length";
    case MediaDifference::What::size:
        return "size";
    case MediaDifference::What::sound:
        return "sound";
    }
    return "unknown";
}

} // namespace engine
