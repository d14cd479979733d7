#include "tests/engine/streaming/MediaServer.h"

#include <algorithm>
#include <cstdlib>
#include <random>

namespace test {

namespace {

std::string pathOf(RawRequest const& request) {
    std::size_t const begin = request.line.find(' ') + 1;
    return request.line.substr(begin, request.line.find_first_of(" ?", begin) - begin);
}

std::string validators(MediaFile const& file) {
    return (file.etag.empty() ? "" : "ETag: " + file.etag + "\r\n") +
           (file.lastModified.empty() ? "" : "Last-Modified: " + file.lastModified + "\r\n");
}

} // namespace

std::string mediaBytes(std::size_t size, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::string bytes(size + 8, '\0');
    for (std::size_t i = 0; i < size; i += 8) {
        std::uint64_t const value = random();
        std::copy_n(reinterpret_cast<char const*>(&value), 8, bytes.begin() + static_cast<std::ptrdiff_t>(i));
    }
    bytes.resize(size);
    return bytes;
}

std::optional<AskedPart> askedPart(RawRequest const& request, std::size_t size) {
    std::string const value = request.header("Range");
    std::size_t const dash = value.find('-');
    if (!value.starts_with("bytes=") || dash == std::string::npos || size == 0) {
        return std::nullopt;
    }
    std::string const first = value.substr(6, dash - 6);
    std::string const last = value.substr(dash + 1);
    AskedPart part{0, size};
    if (first.empty()) {
        part.begin = size - std::min<std::size_t>(size, std::strtoull(last.c_str(), nullptr, 10));
    } else {
        part.begin = std::strtoull(first.c_str(), nullptr, 10);
        if (!last.empty()) {
            part.end = std::min<std::size_t>(size, std::strtoull(last.c_str(), nullptr, 10) + 1);
        }
    }
    return part.begin < part.end ? std::optional(part) : std::nullopt;
}

MediaServer::MediaServer()
    : raw_(std::make_unique<RawServer>([this](RawConnection& connection) {
          while (auto const request = connection.readRequest()) {
              Fault fault;
              {
                  std::lock_guard const lock(mutex_);
                  ++count_;
                  fault = fault_;
                  arrived_.notify_all();
              }
              if (!fault || !fault(connection, *request)) {
                  answer(connection, *request);
              }
          }
      })) {}

void MediaServer::stop() {
    raw_.reset();
}

void MediaServer::put(std::string const& path, MediaFile file) {
    std::lock_guard const lock(mutex_);
    files_[path] = std::move(file);
}

void MediaServer::remove(std::string const& path) {
    std::lock_guard const lock(mutex_);
    files_.erase(path);
}

void MediaServer::setFault(Fault fault) {
    std::lock_guard const lock(mutex_);
    fault_ = std::move(fault);
}

void MediaServer::answerPart(RawConnection& connection, AskedPart part, std::size_t total,
                             std::string_view body, std::string_view headers) {
    connection.answer(206, body,
                      "Content-Range: bytes " + std::to_string(part.begin) + '-' +
                          std::to_string(part.end - 1) + '/' + std::to_string(total) + "\r\n" +
                          std::string(headers));
}

void MediaServer::answer(RawConnection& connection, RawRequest const& request) {
    MediaFile file;
    {
        std::lock_guard const lock(mutex_);
        auto const found = files_.find(pathOf(request));
        if (found == files_.end()) {
            connection.answer(404, "not here");
            return;
        }
        file = found->second;
    }
    std::string const known = request.header("If-None-Match");
    std::string const since = request.header("If-Modified-Since");
    if ((!known.empty() && known == file.etag) || (!since.empty() && since == file.lastModified)) {
        connection.send("HTTP/1.1 304 Not Modified\r\n" + validators(file) + "\r\n");
        return;
    }
    std::string const condition = request.header("If-Range");
    bool const wantsPart =
        givesParts && !request.header("Range").empty() && (condition.empty() || condition == file.etag);
    if (!wantsPart) {
        connection.answer(200, file.bytes, validators(file));
        return;
    }
    if (std::optional<AskedPart> const part = askedPart(request, file.bytes.size())) {
        answerPart(connection, *part, file.bytes.size(),
                   std::string_view(file.bytes).substr(part->begin, part->end - part->begin),
                   validators(file));
    } else {
        connection.answer(416, "", "Content-Range: bytes */" + std::to_string(file.bytes.size()) + "\r\n");
    }
}

std::vector<std::string> MediaServer::parts() const {
    std::vector<std::string> parts;
    for (RawRequest const& request : raw_->requests()) {
        std::string const range = request.header("Range");
        parts.push_back(range.empty() ? "-" : range);
    }
    return parts;
}

void MediaServer::waitForRequests(std::size_t count) {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [&] { return count_ >= count; });
}

} // namespace test
