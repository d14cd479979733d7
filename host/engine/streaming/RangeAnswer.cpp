#include "host/engine/streaming/RangeAnswer.h"

#include <algorithm>
#include <charconv>

namespace engine {

namespace {

constexpr std::size_t longestValidator = 1024;

StreamError protocolError(char const* text) {
    return {StreamError::Kind::protocol, text};
}

// Takes digits off the front.
std::optional<std::uint64_t> takeNumber(std::string_view& text) {
    std::uint64_t number = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return number;
}

bool take(std::string_view& text, std::string_view part) {
    if (!text.starts_with(part)) {
        return false;
    }
    text.remove_prefix(part.size());
    return true;
}

bool isKeepable(std::string_view value) {
    return !value.empty() && value.size() <= longestValidator &&
           std::ranges::none_of(value, [](char c) { return (c >= 0 && c < 0x20) || c == 0x7f; });
}

bool isQuoted(std::string_view tag) {
    return tag.size() >= 2 && tag.starts_with('"') && tag.ends_with('"');
}

} // namespace

Validator validatorOf(std::string_view etag, std::string_view lastModified) {
    if (isKeepable(etag) && isQuoted(etag)) {
        return {Validator::Kind::strongETag, std::string(etag)};
    }
    if (isKeepable(lastModified)) {
        return {Validator::Kind::lastModified, std::string(lastModified)};
    }
    if (isKeepable(etag)) {
        return {Validator::Kind::weakETag, std::string(etag)};
    }
    return {};
}

std::optional<ContentRange> parseContentRange(std::string_view value) {
    ContentRange result;
    if (!take(value, "bytes ")) {
        return std::nullopt;
    }
    if (!take(value, "*")) {
        std::optional<std::uint64_t> const first = takeNumber(value);
        bool const dash = first && take(value, "-");
        std::optional<std::uint64_t> const last = dash ? takeNumber(value) : std::nullopt;
        if (!last || *last < *first || *last >= largestFile_bytes) {
            return std::nullopt;
        }
        result.range = ByteRange{*first, *last + 1};
    }
    if (!take(value, "/")) {
        return std::nullopt;
    }
    if (!take(value, "*")) {
        result.total = takeNumber(value);
        if (!result.total || (result.range && result.range->end > *result.total)) {
            return std::nullopt;
        }
    }
    bool const tellsNothing = !result.range && !result.total;
    return value.empty() && !tellsNothing ? std::optional(result) : std::nullopt;
}

bool isOfSameFile(RangeAnswer const& answer, ContentState const& known) {
    std::optional<std::uint64_t> total = answer.status == 206 ? std::nullopt : answer.length;
    if (answer.status == 206 && answer.contentRange) {
        total = answer.contentRange->total;
    }
    if (total && *total != known.total_bytes) {
        return false;
    }
    switch (known.validator.kind) {
    case Validator::Kind::strongETag:
    case Validator::Kind::weakETag:
        return answer.etag.empty() || answer.etag == known.validator.text;
    case Validator::Kind::lastModified:
        return answer.lastModified.empty() || answer.lastModified == known.validator.text;
    case Validator::Kind::none:
        break;
    }
    return true;
}

StreamError faultOfPart(RangeAnswer const& answer, ByteRange asked, ContentState const* known) {
    if (answer.encoded) {
        return protocolError("a part of the file came with a content encoding");
    }
    if (!answer.contentRange || !answer.contentRange->range) {
        return protocolError("a part of the file came without its place");
    }
    ByteRange const range = *answer.contentRange->range;
    if (range.begin != asked.begin || range.end > asked.end) {
        return protocolError("another part of the file came than was asked for");
    }
    if (!answer.contentRange->total && known == nullptr) {
        return protocolError("the server does not tell the length of the file");
    }
    if (answer.length && *answer.length != range.size()) {
        return protocolError("a part of the file came with another length than its place says");
    }
    return {};
}

StreamError errorOfStatus(int status) {
    std::string text = "the server answered with status " + std::to_string(status);
    if (status == 404 || status == 410) {
        return {StreamError::Kind::missing, std::move(text)};
    }
    if (status >= 500) {
        return {StreamError::Kind::server, std::move(text)};
    }
    return {status >= 400 ? StreamError::Kind::refused : StreamError::Kind::protocol, std::move(text)};
}

} // namespace engine
