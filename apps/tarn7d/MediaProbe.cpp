#include "apps/tarn7d/MediaProbe.h"

#include <algorithm>

extern "C" {
#include <libavutil/log.h>
}

#include "host/engine/media/FFmpegHandles.h"
#include "host/engine/media/describeMedia.h"

namespace tarn7d {

namespace {

using Input = engine::ffmpeg::Format;
using engine::ffmpeg::Codec;
using engine::ffmpeg::Frame;
using engine::ffmpeg::Packet;
using engine::ffmpeg::Scaler;

Input openInput(std::filesystem::path const& file) {
    // FFmpeg's own lines would carry hostile names to standard error; failures are told by value.
    av_log_set_level(AV_LOG_QUIET);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    av_dict_set(&options, "format_whitelist", allowedFormats, 0);
    AVFormatContext* opened = nullptr;
    // The "file:" in front keeps a name such as "concat:a|b" from being taken for another protocol.
    std::string const url = "file:" + file.string();
    int const code = avformat_open_input(&opened, url.c_str(), nullptr, &options);
    av_dict_free(&options);
    Input input(code == 0 ? opened : nullptr);
    if (input == nullptr || avformat_find_stream_info(input.get(), nullptr) < 0) {
        return nullptr;
    }
    return input;
}

AVStream* findStream(AVFormatContext* input, AVMediaType type) {
    int const index = av_find_best_stream(input, type, -1, -1, nullptr, 0);
    return index < 0 ? nullptr : input->streams[index];
}

CodecFamily family(AVCodecID id) {
    switch (id) {
    case AV_CODEC_ID_DVVIDEO:
        return CodecFamily::dv;
    case AV_CODEC_ID_MJPEG:
        return CodecFamily::motionJpeg;
    case AV_CODEC_ID_MJPEGB:
        return CodecFamily::motionJpegB;
    case AV_CODEC_ID_H264:
        return CodecFamily::h264;
    case AV_CODEC_ID_PRORES:
        return CodecFamily::prores;
    case AV_CODEC_ID_PNG:
        return CodecFamily::png;
    case AV_CODEC_ID_MPEG2VIDEO:
        return CodecFamily::mpeg2;
    case AV_CODEC_ID_MPEG4:
        return CodecFamily::mpeg4;
    case AV_CODEC_ID_DNXHD:
        return CodecFamily::dnxhd;
    default:
        return CodecFamily::other;
    }
}

CodecProfile profile(AVCodecParameters const& codec) {
    switch (codec.codec_id) {
    case AV_CODEC_ID_H264:
        return codec.profile == FF_PROFILE_H264_HIGH                   ? CodecProfile::high
               : codec.profile == FF_PROFILE_H264_MAIN                 ? CodecProfile::main
               : codec.profile == FF_PROFILE_H264_CONSTRAINED_BASELINE ? CodecProfile::constrainedBaseline
                                                                       : CodecProfile::other;
    case AV_CODEC_ID_MPEG2VIDEO:
        return codec.profile == FF_PROFILE_MPEG2_MAIN ? CodecProfile::main : CodecProfile::other;
    case AV_CODEC_ID_DNXHD:
        return codec.profile >= FF_PROFILE_DNXHR_LB ? CodecProfile::dnxhr : CodecProfile::other;
    default:
        return CodecProfile::other;
    }
}

CodecTraits traits(AVCodecParameters const& codec) {
    return {family(codec.codec_id), profile(codec), codec.codec_tag, codec.format == AV_PIX_FMT_YUV422P,
            avcodec_get_name(codec.codec_id)};
}

bool saysInterlaced(AVCodecParameters const& codec) {
    return codec.field_order == AV_FIELD_TT || codec.field_order == AV_FIELD_BB ||
           codec.field_order == AV_FIELD_TB || codec.field_order == AV_FIELD_BT;
}

Rate toRate(AVRational value) {
    return value.num > 0 && value.den > 0 ? Rate{value.num, value.den} : Rate{};
}

std::int64_t duration_ms(AVFormatContext const& input, AVStream const& stream) {
    constexpr AVRational milliseconds{1, 1000};
    if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0) {
        return av_rescale_q(stream.duration, stream.time_base, milliseconds);
    }
    if (input.duration != AV_NOPTS_VALUE && input.duration > 0) {
        return input.duration / (AV_TIME_BASE / 1000);
    }
    return 0;
}

Rate pixelAspect(AVStream const& stream) {
    Rate const container = toRate(stream.sample_aspect_ratio);
    return container.numerator > 0 ? container : toRate(stream.codecpar->sample_aspect_ratio);
}

bool isSensibleSize(int width, int height) {
    constexpr int largest = 16384;
    return width > 0 && height > 0 && width <= largest && height <= largest;
}

// Decodes the first picture at or after the wanted place, or the last one before the file's end.
Frame decodeOne(AVFormatContext* input, AVStream* stream) {
    AVCodec const* const decoder = avcodec_find_decoder(stream->codecpar->codec_id);
    Codec const codec(decoder != nullptr ? avcodec_alloc_context3(decoder) : nullptr);
    if (codec == nullptr || avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0) {
        return nullptr;
    }
    codec->thread_count = 1;
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0) {
        return nullptr;
    }
    if (stream->duration > 0) {
        std::int64_t const start = stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time;
        // Not finding the place is no failure: the picture is then one from the beginning.
        (void)av_seek_frame(input, stream->index, start + stream->duration / 3, AVSEEK_FLAG_BACKWARD);
    }
    Packet const packet(av_packet_alloc());
    Frame frame(av_frame_alloc());
    constexpr int mostPackets = 2000; // a damaged file must not be read to its end
    for (int i = 0; packet != nullptr && frame != nullptr && i < mostPackets; ++i) {
        int const read = av_read_frame(input, packet.get());
        if (read >= 0 && packet->stream_index != stream->index) {
            av_packet_unref(packet.get());
            continue;
        }
        (void)avcodec_send_packet(codec.get(), read >= 0 ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        if (avcodec_receive_frame(codec.get(), frame.get()) == 0) {
            return frame;
        }
        if (read < 0) {
            break;
        }
    }
    return nullptr;
}

Frame scaled(AVFrame const& source, int width, int height) {
    Frame target(av_frame_alloc());
    if (target == nullptr) {
        return nullptr;
    }
    target->format = AV_PIX_FMT_YUVJ420P;
    target->width = width;
    target->height = height;
    target->color_range = AVCOL_RANGE_JPEG;
    Scaler const scaler(sws_getContext(source.width, source.height, static_cast<AVPixelFormat>(source.format),
                                       width, height, AV_PIX_FMT_YUVJ420P, SWS_AREA, nullptr, nullptr,
                                       nullptr));
    if (scaler == nullptr || av_frame_get_buffer(target.get(), 0) < 0 ||
        sws_scale(scaler.get(), source.data, source.linesize, 0, source.height, target->data,
                  target->linesize) <= 0) {
        return nullptr;
    }
    return target;
}

std::vector<unsigned char> encodeJpeg(AVFrame const& picture) {
    AVCodec const* const encoder = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    Codec const codec(encoder != nullptr ? avcodec_alloc_context3(encoder) : nullptr);
    if (codec == nullptr) {
        return {};
    }
    codec->width = picture.width;
    codec->height = picture.height;
    codec->pix_fmt = AV_PIX_FMT_YUVJ420P;
    codec->color_range = AVCOL_RANGE_JPEG;
    codec->time_base = {1, 25};
    codec->thread_count = 1;
    codec->flags |= AV_CODEC_FLAG_QSCALE;
    codec->global_quality = FF_QP2LAMBDA * 4;
    Packet const packet(av_packet_alloc());
    if (packet == nullptr || avcodec_open2(codec.get(), encoder, nullptr) < 0 ||
        avcodec_send_frame(codec.get(), &picture) < 0 ||
        avcodec_receive_packet(codec.get(), packet.get()) < 0) {
        return {};
    }
    return {packet->data, packet->data + packet->size};
}

// Files of interlaced material often say nothing, or the wrong thing; then a decoded picture tells. Only
// sizes that have an interlaced standard are worth the decoding.
bool isInterlaced(AVFormatContext* input, AVStream* stream) {
    AVCodecParameters const& codec = *stream->codecpar;
    if (saysInterlaced(codec)) {
        return true;
    }
    PictureTraits const asInterlaced{codec.width, codec.height, true, {}};
    constexpr int firstWithoutStandard = 6;
    int const standard = videoStandard(asInterlaced);
    if (standard == firstWithoutStandard || standard == firstWithoutStandard + 1) {
        return false;
    }
    Frame const frame = decodeOne(input, stream);
    return frame != nullptr && frame->interlaced_frame != 0;
}

int evenHeight(int width, AVFrame const& frame, Rate aspect) {
    double const pixel =
        aspect.numerator > 0 ? static_cast<double>(aspect.numerator) / aspect.denominator : 1.0;
    double const height = width * static_cast<double>(frame.height) / (frame.width * pixel);
    return std::clamp(static_cast<int>(height / 2 + 0.5) * 2, 2, width * 4);
}

} // namespace

std::optional<MediaInfo> probeMedia(std::filesystem::path const& file) noexcept {
    try {
        Input const input = openInput(file);
        AVStream* const video = input != nullptr ? findStream(input.get(), AVMEDIA_TYPE_VIDEO) : nullptr;
        if (video == nullptr || (video->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 ||
            !isSensibleSize(video->codecpar->width, video->codecpar->height)) {
            return std::nullopt;
        }
        MediaInfo info;
        info.codec = codecName(traits(*video->codecpar));
        info.width = video->codecpar->width;
        info.height = video->codecpar->height;
        info.rate = toRate(engine::exactFrameRate(*video));
        info.standard = videoStandard({info.width, info.height, isInterlaced(input.get(), video), info.rate});
        info.aspect = aspectText(info.width, info.height, pixelAspect(*video));
        info.duration_ms = duration_ms(*input, *video);
        AVStream const* const audio = findStream(input.get(), AVMEDIA_TYPE_AUDIO);
        info.sound = audio == nullptr
                         ? soundText(0, 0, {})
                         : soundText(audio->codecpar->ch_layout.nb_channels, audio->codecpar->sample_rate,
                                     avcodec_get_name(audio->codecpar->codec_id));
        if (info.duration_ms <= 0) {
            return std::nullopt;
        }
        return info;
    } catch (std::exception const&) {
        return std::nullopt;
    }
}

std::vector<unsigned char> makeThumbnail(std::filesystem::path const& file, int width) noexcept {
    try {
        Input const input = openInput(file);
        AVStream* const video = input != nullptr ? findStream(input.get(), AVMEDIA_TYPE_VIDEO) : nullptr;
        if (video == nullptr) {
            return {};
        }
        Frame const frame = decodeOne(input.get(), video);
        if (frame == nullptr || !isSensibleSize(frame->width, frame->height)) {
            return {};
        }
        Frame const picture = scaled(*frame, width, evenHeight(width, *frame, pixelAspect(*video)));
        return picture != nullptr ? encodeJpeg(*picture) : std::vector<unsigned char>();
    } catch (std::exception const&) {
        return {};
    }
}

} // namespace tarn7d
