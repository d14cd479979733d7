// Owners of the FFmpeg libraries' objects.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace engine::ffmpeg {

struct Release {
    void operator()(AVFormatContext* input) const noexcept { avformat_close_input(&input); }
    void operator()(AVCodecContext* codec) const noexcept { avcodec_free_context(&codec); }
    void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
    void operator()(SwsContext* scaler) const noexcept { sws_freeContext(scaler); }
    void operator()(AVIOContext* io) const noexcept {
        // The library may have put another buffer in the place of the first one.
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};

using Format = std::unique_ptr<AVFormatContext, Release>;
using Codec = std::unique_ptr<AVCodecContext, Release>;
using Frame = std::unique_ptr<AVFrame, Release>;
using Packet = std::unique_ptr<AVPacket, Release>;
using Scaler = std::unique_ptr<SwsContext, Release>;
using IO = std::unique_ptr<AVIOContext, Release>;

} // namespace engine::ffmpeg
