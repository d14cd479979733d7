#include "host/engine/media/MediaInput.h"

#include <vector>

#include "host/engine/media/mediaContainers.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/engine/pictures/PictureDecoder.h"
#include "host/files/iFileManager.h"
#include "host/os/OS.h"

namespace engine {

namespace {

constexpr char const* cancelled = "cancelled";
constexpr char const* notRead = "the file cannot be read";
constexpr char const* noMedia = "this is no media file, or it is damaged or cut short";

// The library keeps these for the whole process. Its lines would carry names out of hostile files to the
// standard error; failures are told by value. What it asks for at once is bounded by what a picture takes.
void limitLibrary() {
    [[maybe_unused]] static bool const done = [] {
        av_log_set_level(AV_LOG_QUIET);
        av_max_alloc(std::size_t{1} << 30);
        return true;
    }();
}

int refuseToOpen(AVFormatContext*, AVIOContext** io, char const*, int, AVDictionary**) noexcept {
    *io = nullptr;
    return AVERROR(EPERM);
}

class Options {
public:
    Options() = default;
    ~Options() { av_dict_free(&entries_); }
    Options(Options const&) = delete;
    Options& operator=(Options const&) = delete;

    void set(char const* key, char const* value) { (void)av_dict_set(&entries_, key, value, 0); }
    void set(char const* key, std::int64_t value) { (void)av_dict_set_int(&entries_, key, value, 0); }
    [[nodiscard]] AVDictionary** get() noexcept { return &entries_; }

private:
    AVDictionary* entries_ = nullptr;
};

AVStream* findStream(AVFormatContext& container, AVMediaType type) noexcept {
    int const index = av_find_best_stream(&container, type, -1, -1, nullptr, 0);
    return index < 0 ? nullptr : container.streams[index];
}

} // namespace

Result<std::unique_ptr<MediaInput>> MediaInput::open(WideString const& path) {
    return open(OS().fileManager().openForRead(path));
}

Result<std::unique_ptr<MediaInput>> MediaInput::open(Zq::Ptr<iFile> file) {
    if (!file) {
        return Failure{"the file cannot be opened"};
    }
    std::unique_ptr<MediaInput> input(new MediaInput(std::move(file)));
    if (isTaskCancelled()) {
        return Failure{cancelled};
    }
    if (!input->openContainer() || !input->readStreams()) {
        return Failure{input->failure()};
    }
    return input;
}

MediaInput::MediaInput(Zq::Ptr<iFile> file) : io_(std::move(file)), size_bytes_(io_.file().getSize()) {}

bool MediaInput::openContainer() {
    limitLibrary();
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) {
        error_ = AVERROR(ENOMEM);
        return false;
    }
    context->pb = io_.context();
    context->interrupt_callback = FileIO::interruption();
    context->io_open = refuseToOpen;
    // A packet that the file's end cuts through, or that says so itself, would show a wrong picture.
    context->flags |= AVFMT_FLAG_DISCARD_CORRUPT;
    constexpr std::int64_t probe_bytes = 1 << 20;
    constexpr std::int64_t mostStreams = 64;
    Options options;
    options.set("protocol_whitelist", "none");
    options.set("format_whitelist", mediaContainers);
    options.set("formatprobesize", probe_bytes);
    options.set("probesize", 4 * probe_bytes);
    options.set("max_streams", mostStreams);
    // A failure frees the context; no name is given, so that no format goes by its ending.
    error_ = avformat_open_input(&context, nullptr, nullptr, options.get());
    container_.reset(context);
    return error_ >= 0;
}

bool MediaInput::readStreams() {
    std::vector<Options> options(container_->nb_streams);
    std::vector<AVDictionary*> entries;
    for (Options& each : options) {
        each.set("max_pixels", static_cast<std::int64_t>(largestPicture_px));
        entries.push_back(*each.get());
    }
    error_ = avformat_find_stream_info(container_.get(), entries.data());
    // The library has taken what it knows out of each list, and left it in another place.
    for (std::size_t i = 0; i < entries.size(); ++i) {
        *options[i].get() = entries[i];
    }
    return error_ >= 0 && !isTaskCancelled() && !io_.hasFailed();
}

AVStream* MediaInput::picture() const noexcept {
    AVStream* const stream = findStream(*container_, AVMEDIA_TYPE_VIDEO);
    return stream != nullptr && (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0 ? stream : nullptr;
}

AVStream* MediaInput::sound() const noexcept {
    return findStream(*container_, AVMEDIA_TYPE_AUDIO);
}

void MediaInput::choose(AVStream const& stream) noexcept {
    chosen_ = stream.index;
    for (unsigned i = 0; i < container_->nb_streams; ++i) {
        container_->streams[i]->discard = static_cast<int>(i) == chosen_ ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
}

MediaInput::Read MediaInput::read(AVPacket& packet) noexcept {
    for (;;) {
        error_ = isTaskCancelled() ? AVERROR_EXIT : av_read_frame(container_.get(), &packet);
        // A packet that could not be read to its end was passed over, and the one behind it shows a wrong
        // picture.
        if (io_.hasFailed()) {
            av_packet_unref(&packet);
            return Read::failed;
        }
        if (error_ == 0 && packet.stream_index == chosen_) {
            return Read::packet;
        }
        av_packet_unref(&packet);
        if (error_ < 0) {
            return error_ == AVERROR_EOF ? Read::end : Read::failed;
        }
    }
}

bool MediaInput::seek(AVStream const& stream, std::int64_t time) noexcept {
    io_.forgetFailure();
    error_ = av_seek_frame(container_.get(), stream.index, time, AVSEEK_FLAG_BACKWARD);
    return error_ >= 0;
}

bool MediaInput::rewind(AVStream const& stream) noexcept {
    std::int64_t const start = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
    // A broadcast's stream is searched for a time, and what stands before the one found would be lost.
    bool const isBroadcast = (container_->iformat->flags & AVFMT_TS_DISCONT) != 0;
    if (isBroadcast || !seek(stream, start)) {
        io_.forgetFailure();
        error_ = av_seek_frame(container_.get(), stream.index, 0, AVSEEK_FLAG_BYTE);
    }
    return error_ >= 0;
}

std::string MediaInput::failure() const {
    if (error_ == AVERROR_EXIT || isTaskCancelled()) {
        return cancelled;
    }
    if (io_.hasFailed()) {
        return notRead;
    }
    if (size_bytes_ == 0) {
        return "the file is empty";
    }
    return error_ == AVERROR(ENOMEM) ? "there is not enough memory for this file" : noMedia;
}

} // namespace engine
