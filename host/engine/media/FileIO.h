// The bytes of one of the host's files, as FFmpeg reads them.
#pragma once

#include "host/engine/media/FFmpegHandles.h"
#include "host/files/iFile.h"
#include "host/object/Ptr.h"

namespace engine {

// Thread: one at a time. Every read asks for the cancellation of the task that it is made in.
class FileIO {
public:
    // The file is there. Throws std::bad_alloc.
    explicit FileIO(Zq::Ptr<iFile> file);
    FileIO(FileIO const&) = delete;
    FileIO& operator=(FileIO const&) = delete;

    [[nodiscard]] AVIOContext* context() const noexcept { return context_.get(); }
    // Ends the library's waits when the calling task is cancelled.
    [[nodiscard]] static AVIOInterruptCB interruption() noexcept;
    // True when the file gave an error since the last time that this was forgotten. The library takes an
    // error for the end of the file here and there.
    [[nodiscard]] bool hasFailed() const noexcept { return failed_; }
    void forgetFailure() noexcept;
    [[nodiscard]] iFile& file() const noexcept { return *file_; }

private:
    static int read(void* self, std::uint8_t* bytes, int size) noexcept;
    static std::int64_t seek(void* self, std::int64_t offset, int whence) noexcept;
    [[nodiscard]] int readBytes(std::uint8_t* bytes, int size);
    [[nodiscard]] std::int64_t seekTo(std::int64_t offset, int whence);

    Zq::Ptr<iFile> const file_;
    bool failed_ = false;
    ffmpeg::IO context_;
};

} // namespace engine
