// What a container's headers and its first decoded picture say of a media file.
#pragma once

#include "host/engine/media/MediaFacts.h"
#include "host/engine/media/MediaInput.h"

namespace engine {

// The facts without those of a picture: container, sounds, duration, rate of bits, size.
[[nodiscard]] MediaFacts describeContainer(MediaInput const& input);
// All facts. `frames` is 0 where the container has no index of them all: reading the whole file tells then.
[[nodiscard]] MediaFacts describeMedia(MediaInput& input, AVStream const& picture, AVFrame const& first);
// Frames a second, exactly; the numerator is 0 where nobody knows.
[[nodiscard]] AVRational exactFrameRate(AVStream const& stream) noexcept;

} // namespace engine
