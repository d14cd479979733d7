#include "apps/tarn7d/MediaResponse.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "apps/http/ByteSpan.h"

namespace tarn7d {

namespace {

class OpenFile {
public:
    explicit OpenFile(std::filesystem::path const& file)
        : descriptor_(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW)) {
        good_ = descriptor_ >= 0 && ::fstat(descriptor_, &status_) == 0 && S_ISREG(status_.st_mode);
    }
    ~OpenFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    OpenFile(OpenFile const&) = delete;
    OpenFile& operator=(OpenFile const&) = delete;

    [[nodiscard]] bool isGood() const noexcept { return good_; }
    [[nodiscard]] std::size_t size() const noexcept { return static_cast<std::size_t>(status_.st_size); }
    [[nodiscard]] std::time_t modified() const noexcept { return status_.st_mtim.tv_sec; }

    // The file's identity and version: two different contents never share it.
    [[nodiscard]] std::string etag() const {
        std::array<char, 96> text{};
        std::snprintf(text.data(), text.size(), "\"%llx-%llx-%llx%08llx\"",
                      static_cast<unsigned long long>(status_.st_ino),
                      static_cast<unsigned long long>(status_.st_size),
                      static_cast<unsigned long long>(status_.st_mtim.tv_sec),
                      static_cast<unsigned long long>(status_.st_mtim.tv_nsec));
        return text.data();
    }

    // Bytes read, 0 at the end or on an error.
    [[nodiscard]] std::size_t read(std::size_t offset, char* target, std::size_t size) const {
        for (;;) {
            ssize_t const got = ::pread(descriptor_, target, size, static_cast<off_t>(offset));
            if (got >= 0 || errno != EINTR) {
                return got > 0 ? static_cast<std::size_t>(got) : 0;
            }
        }
    }

private:
    int descriptor_;
    struct stat status_ {};
    bool good_ = false;
};

std::string httpDate(std::time_t time) {
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts);
    return text.data();
}

bool listsTag(std::string const& header, std::string const& etag) {
    return header == "*" || header.find(etag) != std::string::npos;
}

void sendSpan(httplib::Response& response, std::shared_ptr<OpenFile const> const& file, http::ByteSpan span,
              std::string const& contentType) {
    constexpr std::size_t blockSize = 256 * 1024;
    auto const block = std::make_shared<std::vector<char>>(std::min(blockSize, span.length));
    response.set_content_provider(
        span.length, contentType,
        [file, block, start = span.first](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            std::size_t const got =
                file->read(start + offset, block->data(), std::min(length, block->size()));
            return got > 0 && sink.write(block->data(), got);
        });
}

} // namespace

void sendFile(httplib::Request const& request, httplib::Response& response, std::filesystem::path const& path,
              std::string const& contentType) {
    auto const file = std::make_shared<OpenFile const>(path);
    if (!file->isGood()) {
        sendText(response, 404, "not found\n", "text/plain");
        return;
    }
    std::string const etag = file->etag();
    response.set_header("ETag", etag);
    response.set_header("Last-Modified", httpDate(file->modified()));
    response.set_header("Accept-Ranges", "bytes");
    if (!response.has_header("Cache-Control")) {
        response.set_header("Cache-Control", "no-cache");
    }
    if (request.has_header("If-None-Match") && listsTag(request.get_header_value("If-None-Match"), etag)) {
        response.status = 304;
        return;
    }
    std::size_t const size = file->size();
    bool const sameFile = !request.has_header("If-Range") || request.get_header_value("If-Range") == etag;
    std::optional<http::ByteSpan> const span =
        sameFile ? http::byteSpanOf(request.get_header_value("Range"), size) : std::nullopt;
    if (!span) {
        response.status = 200;
        sendSpan(response, file, {0, size}, contentType);
        return;
    }
    if (span->length == 0) {
        response.set_header("Content-Range", "bytes */" + std::to_string(size));
        sendText(response, 416, "no such range\n", "text/plain");
        return;
    }
    response.status = 206;
    response.set_header("Content-Range", "bytes " + std::to_string(span->first) + "-" +
                                             std::to_string(span->first + span->length - 1) + "/" +
                                             std::to_string(size));
    sendSpan(response, file, *span, contentType);
}

void sendText(httplib::Response& response, int status, std::string text, std::string const& contentType) {
    response.status = status;
    auto const shared = std::make_shared<std::string const>(std::move(text));
    // The library compresses text that is set as a body, with settings that take longer than the answer's own
    // making.
    response.set_content_provider(shared->size(), contentType,
                                  [shared](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                      return sink.write(shared->data() + offset, length);
                                  });
}

} // namespace tarn7d
