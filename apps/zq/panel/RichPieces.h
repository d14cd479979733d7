// Rich text of a repository as pieces of plain text, for a page that shows no markup but its own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apps/zq/panel/GivenLinks.h"
#include "host/json/Builder.h"

namespace zq::panel {

struct RichPiece {
    std::string text;
    std::string link; // an http or https address; empty: none
    bool quiet = false;

    [[nodiscard]] bool operator==(RichPiece const&) const = default;
};

// More is cut off.
inline constexpr std::size_t longestRichText_bytes = 20'000;

// What the host's HTMLUtils makes is understood: paragraphs, which a line end parts, links and minor notes.
// All other markup, and what is not closed, is shown as the text it is. Thread: any.
[[nodiscard]] std::vector<RichPiece> piecesOf(std::string_view rich);

// The same as a member of JSON; its links are given from then on.
void addRich(JSON::Builder& json, char const* key, std::string_view rich, GivenLinks& links);

} // namespace zq::panel
