#include "bench/LibavClip.h"

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <vector>

namespace bench {

namespace {

void check(int result, char const* what) {
    if (result < 0) {
        throw std::runtime_error(std::string("libav cannot ") + what);
    }
}

class Options {
public:
    explicit Options(std::filesystem::path const& authorities) {
        av_dict_set(&entries, "ca_file", authorities.c_str(), 0);
        av_dict_set(&entries, "tls_verify", "1", 0);
    }
    ~Options() { av_dict_free(&entries); }
    Options(Options const&) = delete;
    Options& operator=(Options const&) = delete;

    AVDictionary* entries = nullptr;
};

} // namespace

LibavClip::LibavClip(std::string const& address, std::filesystem::path const& authorities)
    : packet_(av_packet_alloc()), frame_(av_frame_alloc()) {
    Options options(authorities);
    AVFormatContext* context = nullptr;
    check(avformat_open_input(&context, address.c_str(), nullptr, &options.entries), "open");
    container_.reset(context);
    check(avformat_find_stream_info(context, nullptr), "read the streams");
    AVCodec const* decoder = nullptr;
    int const index = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    check(index, "find a picture");
    stream_ = context->streams[index];
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        context->streams[i]->discard = static_cast<int>(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    codec_.reset(avcodec_alloc_context3(decoder));
    check(avcodec_parameters_to_context(codec_.get(), stream_->codecpar), "set the decoder up");
    // As many as the host's own reader takes.
    codec_->thread_count = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 4U));
    check(avcodec_open2(codec_.get(), decoder, nullptr), "open the decoder");
}

double LibavClip::timeOfNext() {
    for (;;) {
        int const result = avcodec_receive_frame(codec_.get(), frame_.get());
        if (result >= 0) {
            return static_cast<double>(frame_->best_effort_timestamp) * av_q2d(stream_->time_base);
        }
        check(result == AVERROR(EAGAIN) ? 0 : result, "decode");
        check(av_read_frame(container_.get(), packet_.get()), "read");
        if (packet_->stream_index == stream_->index) {
            check(avcodec_send_packet(codec_.get(), packet_.get()), "decode");
        }
        av_packet_unref(packet_.get());
    }
}

void LibavClip::nextFrame() {
    (void)timeOfNext();
}

void LibavClip::seek(double position_s) {
    auto const time = static_cast<std::int64_t>(position_s / av_q2d(stream_->time_base));
    check(av_seek_frame(container_.get(), stream_->index, time, AVSEEK_FLAG_BACKWARD), "seek");
    avcodec_flush_buffers(codec_.get());
    constexpr double tolerance_s = 0.001;
    while (timeOfNext() < position_s - tolerance_s) {
    }
}

std::uint64_t readAllByLibav(std::string const& address, std::filesystem::path const& authorities,
                             int step_bytes) {
    Options options(authorities);
    AVIOContext* io = nullptr;
    check(avio_open2(&io, address.c_str(), AVIO_FLAG_READ, nullptr, &options.entries), "open");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(step_bytes));
    std::uint64_t total = 0;
    int count = 0;
    while ((count = avio_read(io, bytes.data(), step_bytes)) > 0) {
        total += static_cast<std::uint64_t>(count);
    }
    avio_close(io);
    return total;
}

} // namespace bench
