// The JSON reader of the engine, on simdjson.
//
// Reads RFC 8259 in UTF-8; one byte order mark in front is skipped. An escape of an unpaired surrogate
// becomes U+FFFD, a number beyond a double's range the largest double of its sign, one too small for a double
// 0.
#pragma once

#include "host/json/parse.h"

namespace engine {

class SimdjsonReader final : public iJSONReader {
public:
    static constexpr std::size_t largestText = std::size_t{64} << 20; // bytes
    static constexpr std::uint32_t deepestNesting = 512;

    // The text `null` gives an element without members. Bytes with at least 64 bytes of padding are read
    // where they are, others from a padded copy. Thread: any.
    [[nodiscard]] Zq::Ptr<JSON::Element> parse(iMemHolder const& bytes) override;
};

} // namespace engine
