// Decoded frames of one stream, in the order in which they are shown or heard.
#pragma once

#include <cstdint>
#include <string>

#include "host/engine/media/FFmpegHandles.h"
#include "host/engine/media/MediaInput.h"
#include "host/engine/settings/Result.h"

namespace engine {

// Thread: one at a time.
class StreamDecoder {
public:
    enum class Next { frame, end, failed };

    // Decodes that stream of the input, of which no other stream is read any more. Both outlive this. With
    // more than one thread, as many frames are decoded ahead.
    [[nodiscard]] static Result<StreamDecoder> make(MediaInput& input, AVStream& stream, int threads);

    // What cannot be decoded is left out, until that much is left out that the rest is not worth a try. The
    // frame holds nothing else at the call.
    [[nodiscard]] Next next(AVFrame& frame);
    // Begins anew behind a jump of the input.
    void restart() noexcept;
    // Why the last call failed, one line for a person.
    [[nodiscard]] std::string const& failure() const noexcept { return failure_; }

private:
    StreamDecoder(MediaInput& input, ffmpeg::Codec codec, ffmpeg::Packet packet)
        : input_(&input), codec_(std::move(codec)), packet_(std::move(packet)) {}
    [[nodiscard]] bool feed();
    [[nodiscard]] bool isWhole(AVFrame const& frame) const noexcept;

    MediaInput* input_;
    ffmpeg::Codec codec_;
    ffmpeg::Packet packet_;
    int fruitless_ = 0; // packets since the last frame
    bool ending_ = false;
    bool runningIn_ = true; // until the first frame whose references were all there
    std::string failure_;
};

} // namespace engine
