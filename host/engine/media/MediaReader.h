// The pictures of a media file, one after the other or from any time on.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "host/engine/media/MediaFacts.h"
#include "host/engine/media/MediaFrame.h"
#include "host/engine/settings/Result.h"
#include "host/files/iFile.h"
#include "host/object/Ptr.h"
#include "host/text/LightweightString.h"

namespace engine {

class MediaInput;

// Each failure is one line for a person; a later call may still succeed. Every operation ends soon when the
// calling thread's task is cancelled, as a failure. Thread: one at a time.
class MediaReader {
public:
    // Opens what stands behind the path through the host's file layer. A file without a moving picture fails.
    [[nodiscard]] static Result<std::unique_ptr<MediaReader>> open(WideString const& path);
    // The same of an open file, which the reader alone uses from now on; null fails.
    [[nodiscard]] static Result<std::unique_ptr<MediaReader>> open(Zq::Ptr<iFile> file);
    // The same of an input that was opened and not read from.
    [[nodiscard]] static Result<std::unique_ptr<MediaReader>> open(std::unique_ptr<MediaInput> input);
    ~MediaReader();
    MediaReader(MediaReader const&) = delete;
    MediaReader& operator=(MediaReader const&) = delete;

    // What the file holds. Decodes a picture where none was decoded yet, which next() then gives. `frames` is
    // 0 where only reading the whole file would tell.
    [[nodiscard]] Result<MediaFacts> facts();
    // The picture after the one that was given last, at first the first; nothing behind the last one.
    [[nodiscard]] Result<std::optional<MediaFrame>> next();
    // The picture that shows at this time, in seconds from the beginning of the first one: the first where
    // the time lies before it, the last where the time lies behind the end. next() goes on from there.
    [[nodiscard]] Result<MediaFrame> seek(double position_s);
    [[nodiscard]] Result<MediaFrame> last();
    // Frames of the picture, counted by reading the whole file without decoding. next() gives the first
    // picture then.
    [[nodiscard]] Result<std::int64_t> countFrames();

private:
    class Implementation;
    explicit MediaReader(std::unique_ptr<Implementation> implementation) noexcept;

    std::unique_ptr<Implementation> const implementation_;
};

} // namespace engine
