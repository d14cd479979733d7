#include "host/engine/media/StreamDecoder.h"

#include "host/engine/os/isTaskCancelled.h"
#include "host/engine/pictures/PictureDecoder.h"

namespace engine {

namespace {

// A damaged file is not decoded to its end for a first frame.
constexpr int mostFruitless = 1000;

} // namespace

Result<StreamDecoder> StreamDecoder::make(MediaInput& input, AVStream& stream, int threads) {
    AVCodec const* const decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (decoder == nullptr) {
        return Failure{std::string("there is no decoder for its codec, ") +
                       avcodec_get_name(stream.codecpar->codec_id)};
    }
    ffmpeg::Codec codec(avcodec_alloc_context3(decoder));
    ffmpeg::Packet packet(av_packet_alloc());
    if (codec == nullptr || packet == nullptr ||
        avcodec_parameters_to_context(codec.get(), stream.codecpar) < 0) {
        return Failure{"there is not enough memory for this file"};
    }
    codec->pkt_timebase = stream.time_base;
    codec->thread_count = threads;
    // Left to itself, the decoder drops frames between a jump and the end of the file that are whole.
    codec->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
    codec->max_pixels = static_cast<std::int64_t>(largestPicture_px);
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0) {
        return Failure{std::string("its picture or sound cannot be decoded as ") + decoder->name};
    }
    input.choose(stream);
    return StreamDecoder(input, std::move(codec), std::move(packet));
}

StreamDecoder::Next StreamDecoder::next(AVFrame& frame) {
    for (;;) {
        int const got = avcodec_receive_frame(codec_.get(), &frame);
        if (got == 0) {
            runningIn_ = runningIn_ && !isWhole(frame);
            if (!runningIn_) {
                fruitless_ = 0;
                return Next::frame;
            }
            av_frame_unref(&frame);
            continue;
        }
        if (got == AVERROR_EOF) {
            return Next::end;
        }
        if (got == AVERROR(ENOMEM)) {
            failure_ = "there is not enough memory for this file";
            return Next::failed;
        }
        if (isTaskCancelled() || (!ending_ && !feed())) {
            failure_ = fruitless_ > mostFruitless ? "no frame of it can be decoded" : input_->failure();
            return Next::failed;
        }
    }
}

// What comes out at the file's end is not marked where its references were missing.
bool StreamDecoder::isWhole(AVFrame const& frame) const noexcept {
    bool const needsNoOther = frame.key_frame != 0 || frame.pict_type == AV_PICTURE_TYPE_I;
    return (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && (!ending_ || needsNoOther);
}

// Gives the decoder its next packet, or tells it of the end.
bool StreamDecoder::feed() {
    MediaInput::Read const read = input_->read(*packet_);
    if (read == MediaInput::Read::failed || ++fruitless_ > mostFruitless) {
        av_packet_unref(packet_.get());
        return false;
    }
    ending_ = read == MediaInput::Read::end;
    // A packet that the decoder refuses is damaged; the next key frame may be whole.
    (void)avcodec_send_packet(codec_.get(), ending_ ? nullptr : packet_.get());
    av_packet_unref(packet_.get());
    return true;
}

void StreamDecoder::restart() noexcept {
    avcodec_flush_buffers(codec_.get());
    fruitless_ = 0;
    ending_ = false;
    runningIn_ = true;
}

} // namespace engine
