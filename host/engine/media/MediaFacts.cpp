#include "host/engine/media/MediaFacts.h"

#include <exception>

#include "host/engine/media/MediaReader.h"
#include "host/engine/media/StreamDecoder.h"
#include "host/engine/media/describeMedia.h"

namespace engine {

namespace {

Result<MediaFacts> inspectSound(MediaInput& input) {
    AVStream* const sound = input.sound();
    if (sound == nullptr) {
        return Failure{"the file holds neither picture nor sound"};
    }
    Result<StreamDecoder> decoder = StreamDecoder::make(input, *sound, 1);
    if (!decoder) {
        return Failure{decoder.error()};
    }
    ffmpeg::Frame const first(av_frame_alloc());
    if (first == nullptr) {
        return Failure{"there is not enough memory for this file"};
    }
    switch (decoder->next(*first)) {
    case StreamDecoder::Next::frame:
        return describeContainer(input);
    case StreamDecoder::Next::end:
        return Failure{"no sound of it can be decoded"};
    default:
        return Failure{decoder->failure()};
    }
}

Result<MediaFacts> inspectPicture(std::unique_ptr<MediaInput> input) {
    Result<std::unique_ptr<MediaReader>> reader = MediaReader::open(std::move(input));
    if (!reader) {
        return Failure{reader.error()};
    }
    Result<MediaFacts> facts = (*reader)->facts();
    if (!facts || facts->frames > 0) {
        return facts;
    }
    Result<std::int64_t> const frames = (*reader)->countFrames();
    if (!frames) {
        return Failure{frames.error()};
    }
    facts->frames = *frames;
    return facts;
}

} // namespace

Result<MediaFacts> inspectMedia(WideString const& path) {
    try {
        Result<std::unique_ptr<MediaInput>> input = MediaInput::open(path);
        if (!input) {
            return Failure{input.error()};
        }
        return (*input)->picture() != nullptr ? inspectPicture(std::move(*input)) : inspectSound(**input);
    } catch (std::exception const& error) {
        return Failure{error.what()};
    }
}

} // namespace engine
