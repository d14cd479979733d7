// A server of media files on loopback that gives parts, and misbehaves where a test tells it to.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/RawServer.h"

namespace test {

// Bytes that differ from place to place and from seed to seed.
[[nodiscard]] std::string mediaBytes(std::size_t size, std::uint64_t seed);

struct MediaFile {
    std::string bytes;
    std::string etag = "\"one\"";
    std::string lastModified = "";
};

// The part that a Range header asks for, as first and last place; nothing where it asks for none that the
// file has.
struct AskedPart {
    std::size_t begin = 0;
    std::size_t end = 0;
};
[[nodiscard]] std::optional<AskedPart> askedPart(RawRequest const& request, std::size_t size);

class MediaServer {
public:
    // True when it has answered the request in its own way, or has left it without an answer.
    using Fault = std::function<bool(RawConnection&, RawRequest const&)>;

    MediaServer();

    void put(std::string const& path, MediaFile file);
    void remove(std::string const& path);
    void setFault(Fault fault);

    // The honest answer to a request.
    void answer(RawConnection& connection, RawRequest const& request);
    // An honest answer of status 206 with other header lines or another body.
    static void answerPart(RawConnection& connection, AskedPart part, std::size_t total,
                           std::string_view body, std::string_view headers = {});

    [[nodiscard]] std::string name() const { return raw_->name(); }
    [[nodiscard]] int connections() const { return raw_->connections(); }
    // "bytes=0-99" of each request that arrived, "-" where it names no part, in the order of their arrival.
    [[nodiscard]] std::vector<std::string> parts() const;
    [[nodiscard]] std::vector<RawRequest> requests() const { return raw_->requests(); }
    // Ends all connections. A fault and what it uses are not needed any more.
    void stop();
    // Waits until so many requests have arrived.
    void waitForRequests(std::size_t count);

    std::atomic<bool> givesParts{true};

private:
    std::mutex mutable mutex_;
    std::condition_variable arrived_;
    std::size_t count_ = 0;
    std::map<std::string, MediaFile> files_;
    Fault fault_;
    std::unique_ptr<RawServer> raw_; // its connections use the members above
};

} // namespace test
