#include "host/engine/log/SpdlogSink.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include "host/engine/log/maskSecrets.h"

namespace engine {

namespace {

spdlog::sink_ptr openSink(std::filesystem::path const& folder, std::size_t size_bytes) {
    try {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        std::string const file = (folder / "host.log").native();
        return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file, size_bytes,
                                                                      SpdlogSink::fileCount - 1);
    } catch (spdlog::spdlog_ex const&) {
        return std::make_shared<spdlog::sinks::stderr_sink_mt>();
    }
}

} // namespace

SpdlogSink::SpdlogSink(std::filesystem::path const& folder, std::size_t size_bytes)
    : logger_(std::make_unique<spdlog::logger>("host", openSink(folder, size_bytes))) {
    logger_->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %v");
    logger_->set_level(spdlog::level::trace);
    logger_->flush_on(spdlog::level::trace);
}

SpdlogSink::~SpdlogSink() = default;

void SpdlogSink::write(std::string_view line) {
    std::string const masked = maskSecrets(line);
    logger_->log(spdlog::level::info, spdlog::string_view_t(masked.data(), masked.size()));
}

} // namespace engine
