// A media file opened for its streams: container and packets, read through the host's file layer alone.
//
// A container may name other files, by path or address. Nothing that it names is ever opened.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/engine/media/FFmpegHandles.h"
#include "host/engine/media/FileIO.h"
#include "host/engine/settings/Result.h"
#include "host/text/LightweightString.h"

namespace engine {

// Operations end soon when the calling thread's task is cancelled. Thread: one at a time.
class MediaInput {
public:
    enum class Read { packet, end, failed };

    // Opens what stands behind the path, of a disk or of a provider. The failure is one line for a person.
    [[nodiscard]] static Result<std::unique_ptr<MediaInput>> open(WideString const& path);
    // The same of an open file; null fails.
    [[nodiscard]] static Result<std::unique_ptr<MediaInput>> open(Zq::Ptr<iFile> file);
    MediaInput(MediaInput const&) = delete;
    MediaInput& operator=(MediaInput const&) = delete;

    [[nodiscard]] AVFormatContext& container() const noexcept { return *container_; }
    // The moving picture, or the first sound; null where there is none. A cover picture does not count.
    [[nodiscard]] AVStream* picture() const noexcept;
    [[nodiscard]] AVStream* sound() const noexcept;
    [[nodiscard]] std::uint64_t size_bytes() const noexcept { return size_bytes_; }

    // Reads the packets of this stream only from now on; the data of others are passed over where the
    // container tells where they lie.
    void choose(AVStream const& stream) noexcept;
    // The next packet of the chosen stream. Where the file itself fails, or the calling task is cancelled,
    // that is a failure and no end.
    [[nodiscard]] Read read(AVPacket& packet) noexcept;
    // Goes to the key frame at or before the time, in the stream's unit; false where none can be found.
    [[nodiscard]] bool seek(AVStream const& stream, std::int64_t time) noexcept;
    // Goes to the beginning of the stream.
    [[nodiscard]] bool rewind(AVStream const& stream) noexcept;
    // Why the last operation failed, one line for a person.
    [[nodiscard]] std::string failure() const;

private:
    explicit MediaInput(Zq::Ptr<iFile> file);
    [[nodiscard]] bool openContainer();
    [[nodiscard]] bool readStreams();

    FileIO io_;
    std::uint64_t const size_bytes_;
    ffmpeg::Format container_; // ends before what it reads from
    int chosen_ = -1;
    int error_ = 0; // of the library, the last one
};

} // namespace engine
