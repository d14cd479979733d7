// A request of the panel's page and what it is answered, without the library that carries them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/json/parse.h"

namespace zq::panel {

// One request that has passed the checks of the transport. A value.
struct Request {
    std::vector<std::string> captures;                     // of the route's pattern, decoded, UTF-8
    std::map<std::string, std::string, std::less<>> query; // decoded; of a key that repeats, the first
    Zq::Ptr<JSON::Element> body; // a JSON object; without members where none was sent
    std::uint64_t lastEvent = 0; // of "Last-Event-ID", else of "since" in the query; 0 without one
    bool inForeignFrame = false; // what it is answered is shown in a frame of a page of another origin
};

// Bytes that the transport sends piece by piece, whole or by ranges. Called by one thread at a time.
class Content {
public:
    virtual ~Content() = default;
    [[nodiscard]] virtual std::uint64_t size() const = 0;
    // Reads up to so many bytes from there; 0 at the end and on a failure, which ends the connection.
    [[nodiscard]] virtual std::size_t read(std::uint64_t offset, std::span<char> bytes) = 0;
    // After a read of 0: the bytes may come yet. The transport looks whether the page is still there, and
    // reads again.
    [[nodiscard]] virtual bool isLate() const { return false; }
};

// Text that the transport sends as it comes, until there is no more or the page has gone.
class LiveText {
public:
    virtual ~LiveText() = default;
    // Waits for the next piece, for a second at most: then the piece is empty, and the transport looks
    // whether the page is still there. False when there will be none.
    [[nodiscard]] virtual bool next(std::string& piece) = 0;
};

struct Response {
    int status = 200;
    std::string type = "application/json; charset=utf-8";
    std::string body;
    std::shared_ptr<Content> content; // in the place of the body
    std::shared_ptr<LiveText> live;   // in the place of the body
    std::vector<std::pair<std::string, std::string>> headers;
    std::string saveAs; // not empty: a file to keep, of this plain name
    // How long the browser may keep the answer without asking; else it is not kept at all.
    std::uint32_t fresh_s = 0;
};

} // namespace zq::panel
