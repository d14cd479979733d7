#include "host/engine/media/describeMedia.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string_view>

namespace engine {

namespace {

using Zq::Image::ScanMode;

std::span<AVStream* const> streamsOf(AVFormatContext const& container) noexcept {
    return {container.streams, container.nb_streams};
}

bool isIsoFamily(AVFormatContext const& container) noexcept {
    return std::string_view(container.iformat->name).starts_with("mov,");
}

// One name out of the library's list of names for a family of containers.
std::string containerName(AVFormatContext const& container) {
    std::string_view const names = container.iformat->name;
    if (!isIsoFamily(container)) {
        return std::string(names.substr(0, names.find(',')));
    }
    AVDictionaryEntry const* const brand = av_dict_get(container.metadata, "major_brand", nullptr, 0);
    // A file from before there were brands is a QuickTime movie.
    std::string_view const value = brand != nullptr ? brand->value : "qt";
    return value.starts_with("qt")   ? "mov"
           : value.starts_with("3g") ? std::string(value.substr(0, 3))
                                     : "mp4";
}

// The field that is shown first. A decoded picture knows better than a header, except where it sees none.
ScanMode scanMode(AVCodecParameters const& codec, AVFrame const& first) noexcept {
    if (first.interlaced_frame != 0) {
        return first.top_field_first != 0 ? ScanMode::interlacedUpperFirst : ScanMode::interlacedLowerFirst;
    }
    switch (codec.field_order) {
    case AV_FIELD_TT:
    case AV_FIELD_BT: // stored bottom field first, shown top field first
        return ScanMode::interlacedUpperFirst;
    case AV_FIELD_BB:
    case AV_FIELD_TB:
        return ScanMode::interlacedLowerFirst;
    default:
        return ScanMode::progressive;
    }
}

// The host's number of exactly this rate. Not of a whole number that only stands for another rate in a coarse
// text: a file says what it means.
Zq::FrameRate hostRate(double framesPerSecond) noexcept {
    Zq::FrameRate const rate = Zq::getEquivalentZqFrameRate(framesPerSecond);
    constexpr double tolerance = 0.0011;
    double const difference = std::abs(Zq::getFramesPerSecond(rate) - framesPerSecond);
    return difference <= framesPerSecond * tolerance ? rate : Zq::FrameRate::unknown;
}

double seconds(std::int64_t time, AVRational unit) noexcept {
    return static_cast<double>(time) * av_q2d(unit);
}

double longestPart_s(AVFormatContext const& container) noexcept {
    constexpr AVRational microseconds{1, AV_TIME_BASE};
    double longest = 0;
    for (AVStream const* const stream : streamsOf(container)) {
        AVMediaType const type = stream->codecpar->codec_type;
        if (stream->duration > 0 && (type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO)) {
            longest = std::max(longest, seconds(stream->duration, stream->time_base));
        }
    }
    return longest > 0 || container.duration <= 0 ? longest : seconds(container.duration, microseconds);
}

// Of a file that was cut short, the index has more than the file.
std::int64_t framesInFile(AVStream const& stream, std::uint64_t size_bytes) noexcept {
    // The library searches its index behind a pointer to something that it may change.
    auto* const searched = const_cast<AVStream*>(&stream);
    std::int64_t frames = 0;
    for (int i = 0; i < avformat_index_get_entries_count(searched); ++i) {
        AVIndexEntry const* const entry = avformat_index_get_entry(searched, i);
        bool const isShown = (entry->flags & AVINDEX_DISCARD_FRAME) == 0;
        bool const isThere = entry->pos <= static_cast<std::int64_t>(size_bytes) - entry->size;
        frames += isShown && isThere ? 1 : 0;
    }
    return frames;
}

// True when the file goes on in fragments, each with an index of its own.
bool hasFragments(MediaInput& input) {
    constexpr std::int64_t shortHead_bytes = 8;
    AVIOContext* const io = input.container().pb;
    std::int64_t const before = avio_tell(io);
    auto const size = static_cast<std::int64_t>(input.size_bytes());
    bool found = false;
    constexpr int mostBoxes = 64; // fragments come soon, or not at all
    std::int64_t position = 0;
    for (int i = 0; i < mostBoxes && !found && position + shortHead_bytes <= size; ++i) {
        if (avio_seek(io, position, SEEK_SET) < 0) {
            break;
        }
        std::int64_t length = avio_rb32(io);
        std::uint32_t const type = avio_rl32(io);
        if (length == 1) {
            length = static_cast<std::int64_t>(avio_rb64(io));
        }
        found = type == MKTAG('m', 'o', 'o', 'f');
        if (length < shortHead_bytes || length > size - position) {
            break;
        }
        position += length;
    }
    (void)avio_seek(io, before, SEEK_SET);
    return found;
}

std::int64_t countFromIndex(MediaInput& input, AVStream const& picture) {
    if (!isIsoFamily(input.container())) {
        return picture.nb_frames;
    }
    return picture.nb_frames > 0 && !hasFragments(input) ? framesInFile(picture, input.size_bytes()) : 0;
}

} // namespace

// The average comes from time stamps that some containers round; the base rate is exact but may be that of
// the fields. So the base rate holds where the two agree.
AVRational exactFrameRate(AVStream const& stream) noexcept {
    constexpr AVRational unknown{0, 1};
    AVRational const average = stream.avg_frame_rate;
    AVRational const base = stream.r_frame_rate;
    bool const hasBase = base.num > 0 && base.den > 0;
    if (average.num <= 0 || average.den <= 0) {
        return hasBase ? base : unknown;
    }
    constexpr double agreement = 0.0005; // finer than the 0.1 % between a rate and its 1001 sibling
    return hasBase && std::abs(av_q2d(base) / av_q2d(average) - 1) < agreement ? base : average;
}

MediaFacts describeContainer(MediaInput const& input) {
    AVFormatContext const& container = input.container();
    MediaFacts facts;
    facts.container = containerName(container);
    if (AVStream const* const sound = input.sound()) {
        facts.audioCodec = avcodec_get_name(sound->codecpar->codec_id);
    }
    for (AVStream const* const stream : streamsOf(container)) {
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            facts.audioChannels += stream->codecpar->ch_layout.nb_channels;
        }
    }
    facts.size_bytes = input.size_bytes();
    facts.duration_s = longestPart_s(container);
    if (facts.duration_s > 0) {
        facts.bitRate = std::llround(static_cast<double>(facts.size_bytes) * 8 / facts.duration_s);
    }
    return facts;
}

MediaFacts describeMedia(MediaInput& input, AVStream const& picture, AVFrame const& first) {
    MediaFacts facts = describeContainer(input);
    facts.videoCodec = avcodec_get_name(picture.codecpar->codec_id);
    facts.width = first.width;
    facts.height = first.height;
    facts.scanMode = scanMode(*picture.codecpar, first);
    AVRational const rate = exactFrameRate(picture);
    facts.rate = hostRate(av_q2d(rate));
    facts.rateNumerator = rate.num;
    facts.rateDenominator = rate.den;
    facts.frames = countFromIndex(input, picture);
    return facts;
}

} // namespace engine
