#include "host/engine/project/EditRecord.h"

#include "host/engine/project/frameCounts.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

// Some three centuries at the fastest rate: what a file claims beyond it is no length to reckon with.
constexpr std::int64_t longest_frames = 1'000'000'000'000;

} // namespace

std::int64_t EditRecord::durationInFrames() const noexcept {
    return framesBefore(duration_s, rate, longest_frames);
}

WideString EditRecord::name() const {
    return fromUTF8(logAttributes.find(LogAttribute(LogAttribute::eName)));
}

} // namespace engine
