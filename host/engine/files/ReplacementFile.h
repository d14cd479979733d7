// A file that takes the place of another one whole, or not at all.
#pragma once

#include <filesystem>
#include <string>

#include "host/engine/files/FileDescriptor.h"

namespace engine {

// An unfinished file beside its destination, in the same folder, that becomes it or goes away. Thread: one
// at a time.
class ReplacementFile {
public:
    // Makes the file, empty; `file()` is none where that fails. The destination is not touched.
    explicit ReplacementFile(std::filesystem::path const& destination);
    ~ReplacementFile();
    ReplacementFile(ReplacementFile const&) = delete;
    ReplacementFile& operator=(ReplacementFile const&) = delete;

    [[nodiscard]] FileDescriptor const& file() const noexcept { return file_; }
    // Empties it, to be written from its beginning. False on an error.
    [[nodiscard]] bool startAnew() const noexcept;
    // Puts what was written on the disk and under the destination's name: in the place of an old file with
    // `overwrite`, else only where there is none. False when that cannot be; an old file then stays.
    [[nodiscard]] bool become(std::filesystem::path const& destination, bool overwrite) const noexcept;

private:
    std::string name_;
    FileDescriptor file_;
};

} // namespace engine
