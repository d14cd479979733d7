#include "host/engine/media/MediaReader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

#include "host/engine/media/StreamDecoder.h"
#include "host/engine/media/describeMedia.h"

namespace engine {

namespace {

constexpr AVRational microseconds{1, AV_TIME_BASE}; // the unit of a whole container's times
constexpr std::int64_t behindEverything = std::numeric_limits<std::int64_t>::max();
constexpr char const* noMemory = "there is not enough memory for this file";

int decodingThreads() noexcept {
    constexpr unsigned most = 4;
    return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, most));
}

// The time at which the stream ends, in its unit; its beginning where nobody knows.
std::int64_t endOf(MediaInput const& input, AVStream const& stream, std::int64_t start) noexcept {
    if (stream.duration > 0) {
        return start + std::min(stream.duration, behindEverything - std::max<std::int64_t>(start, 0));
    }
    std::int64_t const duration = input.container().duration;
    return duration > 0 ? start + av_rescale_q(duration, microseconds, stream.time_base) : start;
}

} // namespace

class MediaReader::Implementation {
public:
    Implementation(std::unique_ptr<MediaInput> input, AVStream& stream, StreamDecoder decoder)
        : input_(std::move(input)), stream_(stream), decoder_(std::move(decoder)), start_(stream.start_time),
          expected_(0) {}

    // Finds the time of the first picture where no header tells it.
    [[nodiscard]] bool begin() {
        if (start_ != AV_NOPTS_VALUE) {
            expected_ = start_;
            return true;
        }
        if (!decodeAhead()) {
            return false;
        }
        start_ = waiting_->time;
        return true;
    }
    [[nodiscard]] Result<MediaFacts> facts();
    [[nodiscard]] Result<std::optional<MediaFrame>> next();
    [[nodiscard]] Result<MediaFrame> seek(double position_s);
    [[nodiscard]] Result<MediaFrame> seekTo(std::int64_t target);
    [[nodiscard]] Result<std::int64_t> countFrames();
    [[nodiscard]] std::string const& failure() const noexcept { return failure_; }

private:
    struct Timed {
        ffmpeg::Frame picture;
        std::int64_t time; // in the stream's unit
    };

    [[nodiscard]] StreamDecoder::Next decode(std::optional<Timed>& into);
    [[nodiscard]] bool decodeAhead();
    [[nodiscard]] bool jump(std::int64_t time);
    [[nodiscard]] std::int64_t timeAt(double position_s) const noexcept;
    [[nodiscard]] MediaFrame give(Timed timed) const noexcept;
    [[nodiscard]] std::int64_t frameLength() const noexcept;
    // The frame that shows at the time, from the key frame at or before `from` on; nothing where that key
    // frame is shown too late.
    [[nodiscard]] Result<std::optional<Timed>> decodeUpTo(std::int64_t target, bool fromStart);

    std::unique_ptr<MediaInput> const input_;
    AVStream& stream_;
    StreamDecoder decoder_;
    std::int64_t start_;           // time of the first picture
    std::int64_t expected_;        // of the next one, where it does not tell itself
    std::optional<Timed> waiting_; // decoded already, not given yet
    ffmpeg::Frame sample_;         // a picture's properties, without its samples
    std::string failure_;
};

StreamDecoder::Next MediaReader::Implementation::decode(std::optional<Timed>& into) {
    ffmpeg::Frame frame(av_frame_alloc());
    if (frame == nullptr) {
        failure_ = noMemory;
        return StreamDecoder::Next::failed;
    }
    StreamDecoder::Next const result = decoder_.next(*frame);
    if (result == StreamDecoder::Next::failed) {
        failure_ = decoder_.failure();
    }
    if (result != StreamDecoder::Next::frame) {
        return result;
    }
    if (sample_ == nullptr) {
        sample_.reset(av_frame_alloc());
        if (sample_ == nullptr || av_frame_copy_props(sample_.get(), frame.get()) < 0) {
            sample_.reset();
            failure_ = noMemory;
            return StreamDecoder::Next::failed;
        }
        sample_->width = frame->width;
        sample_->height = frame->height;
    }
    std::int64_t const said = frame->best_effort_timestamp;
    std::int64_t const time = said != AV_NOPTS_VALUE ? said : expected_;
    expected_ = time + (frame->pkt_duration > 0 ? frame->pkt_duration : frameLength());
    into = Timed{std::move(frame), time};
    return result;
}

// Has a picture wait, so that its properties are known.
bool MediaReader::Implementation::decodeAhead() {
    if (waiting_) {
        return true;
    }
    StreamDecoder::Next const result = decode(waiting_);
    if (result == StreamDecoder::Next::end) {
        failure_ = "no picture of it can be decoded";
    }
    return result == StreamDecoder::Next::frame;
}

std::int64_t MediaReader::Implementation::frameLength() const noexcept {
    AVRational const rate = exactFrameRate(stream_);
    return rate.num > 0 ? std::max<std::int64_t>(av_rescale_q(1, av_inv_q(rate), stream_.time_base), 1) : 1;
}

MediaFrame MediaReader::Implementation::give(Timed timed) const noexcept {
    double const position_s = static_cast<double>(timed.time - start_) * av_q2d(stream_.time_base);
    return {timed.picture.release(), position_s};
}

Result<MediaFacts> MediaReader::Implementation::facts() {
    if (sample_ == nullptr && !decodeAhead()) {
        return Failure{failure_};
    }
    return describeMedia(*input_, stream_, *sample_);
}

Result<std::optional<MediaFrame>> MediaReader::Implementation::next() {
    std::optional<Timed> found = std::exchange(waiting_, std::nullopt);
    if (!found && decode(found) == StreamDecoder::Next::failed) {
        return Failure{failure_};
    }
    return found ? std::optional<MediaFrame>(give(std::move(*found))) : std::optional<MediaFrame>();
}

// A time that was computed from a frame's number may lie a little before the frame, most where the stream's
// unit is coarse and the frame's own time is rounded to it.
std::int64_t MediaReader::Implementation::timeAt(double position_s) const noexcept {
    double const ticks = position_s / av_q2d(stream_.time_base);
    constexpr double mostTicks = 4e18;
    if (!(ticks > 0)) {
        return start_;
    }
    double const tolerance = std::min(0.6, 0.1 * static_cast<double>(frameLength()));
    bool const fits = ticks + static_cast<double>(start_) < mostTicks;
    return fits ? start_ + static_cast<std::int64_t>(ticks + tolerance) : behindEverything;
}

Result<MediaFrame> MediaReader::Implementation::seek(double position_s) {
    return seekTo(timeAt(position_s));
}

// The key frame before a time is not always where the container says: its index goes by the order of
// decoding. Where the first picture behind the jump is too late, the search begins further in front.
Result<MediaFrame> MediaReader::Implementation::seekTo(std::int64_t target) {
    waiting_.reset();
    std::int64_t step = std::max<std::int64_t>(av_rescale_q(1, {1, 1}, stream_.time_base), 1);
    std::int64_t from = std::min(target, endOf(*input_, stream_, start_));
    for (;;) {
        bool const fromStart = from <= start_;
        bool const jumped = fromStart ? jump(start_) : jump(from);
        if (!jumped && fromStart) {
            return Failure{input_->failure()};
        }
        if (jumped) {
            Result<std::optional<Timed>> found = decodeUpTo(target, fromStart);
            if (!found) {
                return Failure{found.error()};
            }
            if (*found) {
                return give(std::move(**found));
            }
        }
        if (fromStart) {
            return Failure{"no picture of it can be decoded"};
        }
        from = from - start_ > step ? from - step : start_;
        step = step < behindEverything / 4 ? step * 4 : step;
    }
}

bool MediaReader::Implementation::jump(std::int64_t time) {
    expected_ = time;
    bool const done = time == start_ ? input_->rewind(stream_) : input_->seek(stream_, time);
    decoder_.restart();
    return done;
}

Result<std::optional<MediaReader::Implementation::Timed>>
MediaReader::Implementation::decodeUpTo(std::int64_t target, bool fromStart) {
    std::optional<Timed> shown;
    for (;;) {
        std::optional<Timed> now;
        StreamDecoder::Next const result = decode(now);
        if (result == StreamDecoder::Next::failed) {
            return Failure{failure_};
        }
        if (result == StreamDecoder::Next::end) {
            return shown;
        }
        if (now->time > target) {
            if (shown) {
                waiting_ = std::move(now);
                return shown;
            }
            return fromStart ? std::move(now) : std::optional<Timed>();
        }
        shown = std::move(now);
    }
}

Result<std::int64_t> MediaReader::Implementation::countFrames() {
    waiting_.reset();
    ffmpeg::Packet const packet(av_packet_alloc());
    if (packet == nullptr) {
        return Failure{noMemory};
    }
    if (!jump(start_)) {
        return Failure{input_->failure()};
    }
    std::int64_t frames = 0;
    MediaInput::Read read = MediaInput::Read::packet;
    while ((read = input_->read(*packet)) == MediaInput::Read::packet) {
        frames += (packet->flags & AV_PKT_FLAG_DISCARD) == 0 ? 1 : 0;
        av_packet_unref(packet.get());
    }
    if (read == MediaInput::Read::failed || !jump(start_)) {
        return Failure{input_->failure()};
    }
    return frames;
}

MediaReader::MediaReader(std::unique_ptr<Implementation> implementation) noexcept
    : implementation_(std::move(implementation)) {}

MediaReader::~MediaReader() = default;

Result<std::unique_ptr<MediaReader>> MediaReader::open(WideString const& path) {
    Result<std::unique_ptr<MediaInput>> input = MediaInput::open(path);
    return input ? open(std::move(*input)) : Failure{input.error()};
}

Result<std::unique_ptr<MediaReader>> MediaReader::open(Zq::Ptr<iFile> file) {
    Result<std::unique_ptr<MediaInput>> input = MediaInput::open(std::move(file));
    return input ? open(std::move(*input)) : Failure{input.error()};
}

Result<std::unique_ptr<MediaReader>> MediaReader::open(std::unique_ptr<MediaInput> input) {
    AVStream* const stream = input->picture();
    if (stream == nullptr) {
        return Failure{"the file holds no moving picture"};
    }
    Result<StreamDecoder> decoder = StreamDecoder::make(*input, *stream, decodingThreads());
    if (!decoder) {
        return Failure{decoder.error()};
    }
    auto implementation = std::make_unique<Implementation>(std::move(input), *stream, std::move(*decoder));
    if (!implementation->begin()) {
        return Failure{implementation->failure()};
    }
    return std::unique_ptr<MediaReader>(new MediaReader(std::move(implementation)));
}

Result<MediaFacts> MediaReader::facts() {
    return implementation_->facts();
}

Result<std::optional<MediaFrame>> MediaReader::next() {
    return implementation_->next();
}

Result<MediaFrame> MediaReader::seek(double position_s) {
    return implementation_->seek(position_s);
}

Result<MediaFrame> MediaReader::last() {
    return implementation_->seekTo(behindEverything);
}

Result<std::int64_t> MediaReader::countFrames() {
    return implementation_->countFrames();
}

} // namespace engine
