// The head of an answer to a request for a part of a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/engine/streaming/ByteRange.h"
#include "host/engine/streaming/ContentState.h"
#include "host/engine/streaming/StreamError.h"

namespace engine {

// Value of a Content-Range header (RFC 9110, section 14.4).
struct ContentRange {
    std::optional<ByteRange> range;     // nothing in "bytes */100"
    std::optional<std::uint64_t> total; // nothing in "bytes 0-9/*"
};

struct RangeAnswer {
    int status = 0;
    std::optional<ContentRange> contentRange;
    std::optional<std::uint64_t> length; // announced bytes of the body
    std::string etag;
    std::string lastModified;
    bool encoded = false; // the body has a content encoding
    bool isPage = false;  // the body is HTML: whoever sends it, as the sign-in of a network, it is no media
};

// Nothing for what is no such value, also where its numbers contradict each other. Thread: any.
[[nodiscard]] std::optional<ContentRange> parseContentRange(std::string_view value);

// Whether the answer, one of status 200 or 206, is of the same file as `known`. Header lines that it leaves
// out tell nothing.
[[nodiscard]] bool isOfSameFile(RangeAnswer const& answer, ContentState const& known);

// Why a 206 cannot be taken as the bytes that were asked for; none where it can. It may end sooner, and must
// begin where it should. `known` may be null for the first answer.
[[nodiscard]] StreamError faultOfPart(RangeAnswer const& answer, ByteRange asked, ContentState const* known);

// What a status other than those that carry the file means.
[[nodiscard]] StreamError errorOfStatus(int status);

} // namespace engine
