// What tells one state of a remote file from another: its length and its validator.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace engine {

struct Validator {
    enum class Kind : std::uint32_t { none, strongETag, lastModified, weakETag };

    Kind kind = Kind::none;
    std::string text; // as the server wrote it

    // Bytes are equal where it is equal (RFC 9110, section 8.8.1).
    [[nodiscard]] bool isStrong() const noexcept { return kind == Kind::strongETag; }
    [[nodiscard]] bool operator==(Validator const&) const = default;
};

struct ContentState {
    std::uint64_t total_bytes = 0;
    Validator validator;
    bool ranges = true; // the server gives parts

    [[nodiscard]] bool isSameFile(ContentState const& other) const noexcept {
        return total_bytes == other.total_bytes && validator == other.validator;
    }
};

// A validator of two header lines, either of which may be empty: a strong entity tag, else the date, else a
// weak tag. Values that are no header text or too long to be kept count as none. Thread: any.
[[nodiscard]] Validator validatorOf(std::string_view etag, std::string_view lastModified);

} // namespace engine
