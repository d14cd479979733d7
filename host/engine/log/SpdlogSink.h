// The host's log as a file that is replaced before it grows large.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>

#include "host/log/Log.h"

namespace spdlog {
class logger;
}

namespace engine {

// Each line goes out at once, with the local time in front. Thread: any.
class SpdlogSink final : public iLogSink {
public:
    static constexpr std::size_t fileSize_bytes = std::size_t{5} << 20;
    static constexpr std::size_t fileCount = 3;

    // Writes to host.log in the folder; before that file would grow beyond its size it becomes host.1.log,
    // and so on, and the oldest goes. Where the folder cannot be written, lines go to standard error.
    explicit SpdlogSink(std::filesystem::path const& folder, std::size_t size_bytes = fileSize_bytes);
    ~SpdlogSink() override;

    void write(std::string_view line) override;

private:
    std::unique_ptr<spdlog::logger> logger_;
};

} // namespace engine
